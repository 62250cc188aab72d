// What a window must offer to those who work without a mouse or cannot see it.
#pragma once

#include <QWidget>

namespace vesk {

// Every control that the keyboard can reach has a name, and no letter chooses two of those in sight. Each page of tabs
// is looked at in turn.
void expect_accessible(QWidget* window);

} // namespace vesk
