// Keeps the mouse wheel from changing controls that it only scrolls past.
#pragma once

class QWidget;

namespace vesk {

// A closed list or a number field passes wheel events on to the scroll area around it.
void ignore_wheel(QWidget& control);

} // namespace vesk
