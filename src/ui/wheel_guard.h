// Keeps the mouse wheel from changing what only lies under it on the way.
#pragma once

class QWidget;

namespace vesk {

// A closed list or a number field passes the wheel on to what scrolls around it.
void ignore_wheel(QWidget& control);

} // namespace vesk
