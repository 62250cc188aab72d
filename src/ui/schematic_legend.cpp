#include "ui/schematic_legend.h"

#include "ui/measures.h"
#include "ui/schematic_signs.h"
#include "ui/value_colours.h"

#include <QPainter>
#include <algorithm>

namespace vesk {

schematic_legend::schematic_legend(const drawn_network* shown,
                                   const std::optional<schematic_view::colouring>& colouring, const QWidget& view)
    : colouring_(colouring), view_(view) {
  if (shown) add_entries(*shown);
  lay_out();
}

void schematic_legend::add_entries(const drawn_network& shown) {
  using kind = schematic_line::kind;
  const double line_width = scaled(34, view_);
  const char* const names[] = {"flow", "solids", "exchange", "above its bottom"};
  for (int i = 0; i < 4; ++i) {
    const auto what = static_cast<kind>(i);
    const auto& lines = shown.picture.lines;
    if (std::ranges::find(lines, what, &schematic_line::what) == lines.end()) continue;
    entries_.push_back({names[i], line_width, [this, what, line_width](QPainter& painter, QPointF from) {
                          const QPen pen = line_pen(what, view_.palette());
                          const QPointF to = from + QPointF(line_width, 0);
                          painter.setPen(pen);
                          painter.drawLine(from, to);
                          if (what != kind::bottom) draw_arrow_head(painter, to, from, pen.color());
                          if (what == kind::exchange) draw_arrow_head(painter, from, to, pen.color());
                        }});
  }
  const auto any = [&](auto property) { return std::ranges::any_of(shown.network.segments, property); };
  if (any([](const auto& one) { return one.flows_in || one.flows_out || one.exchanges_outside; }))
    entries_.push_back({"boundary", 8, [this](QPainter& painter, QPointF left) {
                          const QPointF middle = left + QPointF(4, 0), half(0, view_.fontMetrics().height() * 0.5);
                          draw_short_arrow(painter, middle - half, middle + half,
                                           line_pen(kind::flow, view_.palette()).color());
                        }});
  if (any([](const auto& one) { return one.loads > 0; }))
    entries_.push_back({"load", 10, [this](QPainter& painter, QPointF left) {
                          draw_load(painter, left + QPointF(5, 5), load_colour(view_.palette()));
                        }});
}

void schematic_legend::lay_out() {
  const double gap = scaled(8, view_), line_height = view_.fontMetrics().height() + scaled(10, view_);
  double x = gap, top = 0;
  const auto make_room = [&](double wanted) {
    if (x == gap || x + wanted <= view_.width() - gap) return;
    x = gap;
    top += line_height;
  };
  for (entry& it : entries_) {
    const double wanted = it.sign_width + gap + view_.fontMetrics().horizontalAdvance(it.text);
    make_room(wanted);
    it.place = {x, top + line_height / 2};
    x += wanted + 2 * gap;
  }
  if (colouring_) {
    make_room(scale_width());
    scale_ = {x, top, view_.width() - gap - x, line_height};
  }
  height_ = top + line_height;
}

void schematic_legend::paint(QPainter& painter, QPointF corner) const {
  painter.save();
  painter.setFont(view_.font());
  painter.setPen(view_.palette().mid().color());
  painter.drawLine(corner, corner + QPointF(view_.width(), 0));
  const double gap = scaled(8, view_), line_height = painter.fontMetrics().height();
  for (const entry& it : entries_) {
    const QPointF left = corner + it.place;
    it.draw_sign(painter, left);
    painter.setPen(view_.palette().text().color());
    painter.drawText(QRectF(left.x() + it.sign_width + gap, left.y() - line_height / 2, view_.width(), line_height),
                     Qt::AlignVCenter | Qt::AlignLeft, it.text);
  }
  if (colouring_) paint_scale(painter, scale_.translated(corner));
  painter.restore();
}

double schematic_legend::scale_width() const {
  const double gap = scaled(6, view_);
  double width = scaled(150, view_);
  for (const QString& text : {colouring_->title, number_text(colouring_->least), number_text(colouring_->greatest)})
    width += view_.fontMetrics().horizontalAdvance(text) + gap;
  return width;
}

// From the right: maximum, colours, minimum, title.
void schematic_legend::paint_scale(QPainter& painter, const QRectF& place) const {
  const double gap = scaled(6, view_), bar = scaled(150, view_);
  const QString least = number_text(colouring_->least), greatest = number_text(colouring_->greatest);
  double right = place.right();
  const auto text = [&](const QString& what) {
    const double width = std::min<double>(painter.fontMetrics().horizontalAdvance(what), right - place.left());
    if (width <= 0) return;
    painter.setPen(view_.palette().text().color());
    painter.drawText(QRectF(right - width - 1, place.top(), width + 1, place.height()),
                     Qt::AlignVCenter | Qt::AlignRight,
                     painter.fontMetrics().elidedText(what, Qt::ElideRight, static_cast<int>(width + 1)));
    right -= width + gap;
  };
  text(greatest);
  const QRectF colours(right - bar, place.top() + place.height() * 0.25, bar, place.height() * 0.5);
  constexpr int pieces = 60;
  for (int i = 0; i < pieces; ++i)
    painter.fillRect(QRectF(colours.left() + bar * i / pieces, colours.top(), bar / pieces + 1, colours.height()),
                     colour_on_scale((i + 0.5) / pieces));
  painter.setPen(view_.palette().text().color());
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(colours);
  right = colours.left() - gap;
  text(least);
  text(colouring_->title);
}

} // namespace vesk
