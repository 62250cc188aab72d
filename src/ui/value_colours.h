// The colours of a scale of values: from dark blue over green to yellow, told apart also by the colour-blind and in
// grey.
#pragma once

#include <QColor>

namespace vesk {

QColor colour_on_scale(double share); // 0 to 1; outside of that the ends
QColor text_colour_on(const QColor& ground);

} // namespace vesk
