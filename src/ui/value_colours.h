// The colours of a scale of values, from dark blue through green to yellow: distinguishable in grey and by colour-blind
// users.
#pragma once

#include <QColor>

namespace vesk {

QColor colour_on_scale(double share); // 0 to 1; clamped to this range
QColor text_colour_on(const QColor& ground);

} // namespace vesk
