// Lengths on the screen, given for the usual font at 96 dots per inch. They grow with the font, so that texts fit at
// any size. Qt handles high-density screens.
#pragma once

#include <QFontMetrics>
#include <QWidget>

namespace vesk {

inline constexpr int usual_font_height = 15;

inline int scaled(int length, const QWidget& widget) {
  return length * widget.fontMetrics().height() / usual_font_height;
}

} // namespace vesk
