// Requirements on windows for users without a mouse or without sight.
#pragma once

#include <QWidget>

namespace vesk {

// Every control that the keyboard can reach has a name, and no letter selects two visible controls. Checks each tab
// page in turn.
void expect_accessible(QWidget* window);

// Every control of the window as it is shown lies in it, uncovered, and no text is cut.
void expect_in_reach_as_shown(QWidget* window);

} // namespace vesk
