// Lengths on the screen. They are stated for the usual font at 96 dots per inch and grow with the font, so that texts
// have the room they need at any size; high-density screens are the toolkit's own matter.
#pragma once

#include <QFontMetrics>
#include <QWidget>

namespace vesk {

inline constexpr int usual_font_height = 15;

inline int scaled(int length, const QWidget& widget) {
  return length * widget.fontMetrics().height() / usual_font_height;
}

} // namespace vesk
