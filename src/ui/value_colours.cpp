#include "ui/value_colours.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace vesk {

namespace {

// Lightness rises evenly, so that equal steps look equally large.
constexpr QRgb stops[] = {0xFF2A1A5E, 0xFF30418C, 0xFF2B6A96, 0xFF278F8D, 0xFF46B275, 0xFF97CF50, 0xFFF6E640};

int between(int one, int two, double share) {
  return static_cast<int>(std::lround(one + (two - one) * share));
}

} // namespace

QColor colour_on_scale(double share) {
  constexpr int steps = static_cast<int>(std::size(stops)) - 1;
  const double place = std::clamp(share, 0.0, 1.0) * steps;
  const int below = std::min(static_cast<int>(place), steps - 1);
  const QColor one = QColor::fromRgb(stops[below]), two = QColor::fromRgb(stops[below + 1]);
  const double rest = place - below;
  return {between(one.red(), two.red(), rest), between(one.green(), two.green(), rest),
          between(one.blue(), two.blue(), rest)};
}

QColor text_colour_on(const QColor& ground) {
  const int light = (299 * ground.red() + 587 * ground.green() + 114 * ground.blue()) / 1000;
  return light < 130 ? Qt::white : Qt::black;
}

} // namespace vesk
