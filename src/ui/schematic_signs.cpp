#include "ui/schematic_signs.h"

#include "ui/appearance.h"

#include <QPainter>
#include <QPalette>
#include <cmath>

namespace vesk {

namespace {

constexpr double arrow_length = 9, arrow_width = 4;

// Distinguished by dashes as well as by colour.
struct line_style {
  QColor light, dark;
  Qt::PenStyle style;
  double width;
};
const line_style styles[] = {
    {QColor(0x1F, 0x4E, 0x9E), QColor(0x8A, 0xB4, 0xF0), Qt::SolidLine, 1.6},   // flow
    {QColor(0x8A, 0x5A, 0x10), QColor(0xD8, 0xB0, 0x60), Qt::DashDotLine, 1.2}, // solids
    {QColor(0x20, 0x7A, 0x3C), QColor(0x80, 0xD0, 0x98), Qt::DashLine, 1.2},    // exchange
    {QColor(0x80, 0x80, 0x80), QColor(0xA0, 0xA0, 0xA0), Qt::DotLine, 1},       // bottom
};

} // namespace

QPen line_pen(schematic_line::kind what, const QPalette& palette) {
  const line_style& it = styles[static_cast<std::size_t>(what)];
  return QPen(is_dark(palette) ? it.dark : it.light, it.width, it.style);
}

QColor load_colour(const QPalette& palette) {
  return is_dark(palette) ? QColor(0xF0, 0x90, 0x80) : QColor(0xB0, 0x30, 0x20);
}

void draw_arrow_head(QPainter& painter, QPointF tip, QPointF from, const QColor& colour) {
  const QPointF along = tip - from;
  const double length = std::hypot(along.x(), along.y());
  if (length < 1e-6) return;
  const QPointF unit = along / length, aside(-unit.y(), unit.x());
  const QPointF base = tip - unit * arrow_length;
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  painter.drawPolygon(QPolygonF({tip, base + aside * arrow_width, base - aside * arrow_width}));
}

void draw_short_arrow(QPainter& painter, QPointF from, QPointF to, const QColor& colour, bool both) {
  painter.setPen(QPen(colour, 1.6));
  painter.drawLine(from, to);
  draw_arrow_head(painter, to, from, colour);
  if (both) draw_arrow_head(painter, from, to, colour);
}

void draw_load(QPainter& painter, QPointF tip, const QColor& colour) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  painter.drawPolygon(QPolygonF({tip, tip + QPointF(-5, -9), tip + QPointF(5, -9)}));
}

QString number_text(double value) {
  return QString::number(value, 'g', 4);
}

} // namespace vesk
