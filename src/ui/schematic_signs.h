// The lines, arrows and triangles of a network's picture, and their colours in a light and in a dark window.
#pragma once

#include "network/schematic.h"

#include <QColor>
#include <QPen>
#include <QPointF>
#include <QString>

class QPainter;
class QPalette;

namespace vesk {

QPen line_pen(schematic_line::kind what, const QPalette& palette);
QColor load_colour(const QPalette& palette);

void draw_arrow_head(QPainter& painter, QPointF tip, QPointF from, const QColor& colour);
void draw_short_arrow(QPainter& painter, QPointF from, QPointF to, const QColor& colour, bool both = false);
void draw_load(QPainter& painter, QPointF tip, const QColor& colour); // a triangle above its tip

QString number_text(double value); // four digits

} // namespace vesk
