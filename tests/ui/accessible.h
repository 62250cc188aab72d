// Requirements on windows for users without a mouse or without sight.
#pragma once

#include <QWidget>

namespace vesk {

// Every control that the keyboard can reach has a name, and no letter selects two visible controls. Checks each tab
// page in turn.
void expect_accessible(QWidget* window);

} // namespace vesk
