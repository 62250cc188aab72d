// Lengths on the screen. They are stated for the usual font at 96 dots per inch and grow with the font, so that texts
// have room at any size. The toolkit handles high-density screens.
#pragma once

#include <QFontMetrics>
#include <QWidget>

namespace vesk {

inline constexpr int usual_font_height = 15;

inline int scaled(int length, const QWidget& widget) {
  return length * widget.fontMetrics().height() / usual_font_height;
}

} // namespace vesk
