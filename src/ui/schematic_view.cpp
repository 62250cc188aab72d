#include "ui/schematic_view.h"

#include "network/segment_text.h"
#include "ui/measures.h"
#include "ui/schematic_legend.h"
#include "ui/schematic_signs.h"
#include "ui/texts.h"
#include "ui/value_colours.h"

#include <QAccessible>
#include <QFileInfo>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr double smallest_scale = 0.02, greatest_scale = 8;
constexpr double scale_for_text = 0.5, scale_for_marks = 0.2; // below these scales they would be dots
constexpr int click_reach = 3; // greatest movement, in pixels, that still counts as a click
constexpr int way_width = 4;

QPointF point(const schematic_point& of) {
  return {of.x, of.y};
}

QRectF rectangle_of(const schematic_box& box) {
  return {box.middle.x - box_width / 2, box.middle.y - box_height / 2, box_width, box_height};
}

QString ending_of(const QString& file_name) {
  return QFileInfo(file_name).suffix().toLower();
}

} // namespace

schematic_view::schematic_view(QWidget* parent) : QWidget(parent) {
  setObjectName("Schematic");
  setAccessibleName("Network");
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(scaled(160, *this), scaled(120, *this));
}

QSize schematic_view::sizeHint() const {
  return {scaled(900, *this), scaled(520, *this)};
}

void schematic_view::set_note(const QString& note) {
  note_ = note;
  describe();
  update();
}

void schematic_view::show_network(std::shared_ptr<const drawn_network> shown) {
  const bool same_picture = shown_ && shown && shown->picture.boxes.size() == shown_->picture.boxes.size() &&
                            shown->picture.width == shown_->picture.width &&
                            shown->picture.height == shown_->picture.height;
  shown_ = std::move(shown);
  if (selected_ && (!shown_ || *selected_ >= shown_->network.segments.size())) selected_.reset();
  set_way(std::exchange(way_, {}));
  if (!same_picture) fit();
  describe();
  update();
}

void schematic_view::set_colouring(std::optional<colouring> wanted) {
  const bool changes_strip = wanted.has_value() != colouring_.has_value();
  colouring_ = std::move(wanted);
  if (changes_strip && is_fitted_) fit();
  describe();
  update();
}

void schematic_view::select(std::optional<std::size_t> segment) {
  if (segment && (!shown_ || *segment >= shown_->network.segments.size())) segment.reset();
  selected_ = segment;
  if (selected_)
    if (const auto box = box_of(*selected_)) bring_into_sight(*box);
  describe();
  update();
}

void schematic_view::set_way(std::vector<segment_number> segments) {
  way_ = std::move(segments);
  is_on_way_.assign(shown_ ? shown_->network.segments.size() : 0, false);
  for (const segment_number one : way_)
    if (one < is_on_way_.size()) is_on_way_[one] = true;
  update();
}

// The visible part.

QRectF schematic_view::picture_area() const {
  return QRectF(rect()).adjusted(0, 0, 0, -schematic_legend(shown_.get(), colouring_, *this).height());
}

void schematic_view::fit() {
  is_fitted_ = true;
  if (!shown_ || shown_->picture.boxes.empty()) return;
  const QRectF area = picture_area();
  const double both = std::min(area.width() / shown_->picture.width, area.height() / shown_->picture.height);
  scale_ = std::clamp(both, smallest_scale, 1.5);
  corner_ = area.center() - QPointF(shown_->picture.width, shown_->picture.height) * scale_ / 2;
  update();
}

void schematic_view::zoom(double factor, QPointF fixed) {
  const double wanted = std::clamp(scale_ * factor, smallest_scale, greatest_scale);
  corner_ = fixed - (fixed - corner_) * (wanted / scale_);
  scale_ = wanted;
  is_fitted_ = false;
  update();
}

void schematic_view::bring_into_sight(std::size_t box) {
  const QRectF place = rectangle_of(shown_->picture.boxes[box]);
  const QRectF on_screen(corner_ + place.topLeft() * scale_, place.size() * scale_);
  const QRectF area = picture_area();
  if (area.contains(on_screen)) return;
  corner_ += area.center() - on_screen.center();
  is_fitted_ = false;
}

std::optional<std::size_t> schematic_view::box_of(std::size_t segment) const {
  if (!shown_) return std::nullopt;
  const auto& boxes = shown_->picture.boxes;
  const auto found = std::ranges::lower_bound(boxes, segment, {}, &schematic_box::segment);
  if (found == boxes.end() || found->segment != segment) return std::nullopt;
  return static_cast<std::size_t>(found - boxes.begin());
}

std::optional<QPointF> schematic_view::place_of(std::size_t segment) const {
  const auto box = box_of(segment);
  return box ? std::optional(corner_ + point(shown_->picture.boxes[*box].middle) * scale_) : std::nullopt;
}

std::optional<std::size_t> schematic_view::segment_at(QPointF place) const {
  if (!shown_ || !picture_area().contains(place)) return std::nullopt;
  const QPointF at = (place - corner_) / scale_;
  const auto box = box_at(shown_->picture, {at.x(), at.y()});
  return box ? std::optional<std::size_t>(shown_->picture.boxes[*box].segment) : std::nullopt;
}

std::optional<double> schematic_view::value_of(std::size_t segment) const {
  if (!colouring_ || segment >= colouring_->values.size() || !std::isfinite(colouring_->values[segment]))
    return std::nullopt;
  return colouring_->values[segment];
}

// For screen readers.
void schematic_view::describe() {
  QString text = note_;
  if (shown_) {
    text = QString("%1 segments, %2 flows, %3 exchanges.")
               .arg(shown_->picture.boxes.size())
               .arg(shown_->network.flows.size())
               .arg(shown_->network.exchanges.size());
    if (selected_) {
      text = shown(describe_segment(shown_->network, *selected_));
      if (const auto value = value_of(*selected_)) text += "\n" + colouring_->title + ": " + number_text(*value);
    }
  }
  if (text == accessibleDescription()) return;
  setAccessibleDescription(text);
  QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&changed);
}

// Mouse and keyboard.

void schematic_view::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (is_fitted_) fit();
}

void schematic_view::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) update();
}

void schematic_view::wheelEvent(QWheelEvent* event) {
  if (!shown_) return;
  zoom(std::pow(1.0015, event->angleDelta().y()), event->position());
  event->accept();
}

void schematic_view::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  is_pressed_ = true;
  is_dragging_ = false;
  pressed_at_ = event->position();
  corner_then_ = corner_;
}

void schematic_view::mouseMoveEvent(QMouseEvent* event) {
  if (!is_pressed_) return;
  const QPointF moved = event->position() - pressed_at_;
  if (moved.manhattanLength() > click_reach) is_dragging_ = true;
  if (!is_dragging_) return;
  setCursor(Qt::ClosedHandCursor);
  corner_ = corner_then_ + moved;
  is_fitted_ = false;
  update();
}

void schematic_view::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !std::exchange(is_pressed_, false)) return;
  unsetCursor();
  if (is_dragging_) return;
  const auto segment = segment_at(event->position());
  if (!segment) return;
  selected_ = segment;
  describe();
  update();
  emit segment_chosen(*segment, event->modifiers() & Qt::ControlModifier);
}

void schematic_view::mouseDoubleClickEvent(QMouseEvent* event) {
  if (!segment_at(event->position())) fit();
}

void schematic_view::move_selection(int dx, int dy) {
  if (!shown_ || shown_->picture.boxes.empty()) return;
  const auto from = selected_ ? box_of(*selected_) : std::nullopt;
  const auto next = from ? next_box(shown_->picture, *from, dx, dy) : std::optional<std::size_t>(0);
  if (next) select(shown_->picture.boxes[*next].segment);
}

void schematic_view::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
  case Qt::Key_Left: return move_selection(-1, 0);
  case Qt::Key_Right: return move_selection(1, 0);
  case Qt::Key_Up: return move_selection(0, -1);
  case Qt::Key_Down: return move_selection(0, 1);
  case Qt::Key_Plus: return zoom_in();
  case Qt::Key_Minus: return zoom_out();
  case Qt::Key_0:
  case Qt::Key_Home: return fit();
  case Qt::Key_Return:
  case Qt::Key_Enter:
  case Qt::Key_Space:
    if (selected_) emit segment_chosen(*selected_, event->modifiers() & Qt::ControlModifier);
    return;
  default: QWidget::keyPressEvent(event);
  }
}

bool schematic_view::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const auto segment = segment_at(help->pos());
  if (!segment) {
    QToolTip::hideText();
    return true;
  }
  QString text = shown(describe_segment(shown_->network, *segment));
  if (const auto value = value_of(*segment)) text += "\n" + colouring_->title + ": " + number_text(*value);
  QToolTip::showText(help->globalPos(), tool_tip(text), this);
  return true;
}

// Painting.

void schematic_view::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  paint_all(painter);
  if (!hasFocus()) return;
  painter.setPen(QPen(palette().highlight().color(), 1));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void schematic_view::paint_all(QPainter& painter) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), palette().base());
  const QRectF area = picture_area();
  if (!shown_ || shown_->picture.boxes.empty()) {
    painter.setPen(palette().text().color());
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, note_);
    return;
  }
  painter.save();
  painter.setClipRect(area);
  painter.translate(corner_);
  painter.scale(scale_, scale_);
  paint_picture(painter);
  painter.restore();
  schematic_legend(shown_.get(), colouring_, *this).paint(painter, area.bottomLeft());
}

void schematic_view::paint_picture(QPainter& painter) {
  const QRectF area = picture_area();
  const QRectF in_sight = QRectF((area.topLeft() - corner_) / scale_, area.size() / scale_).adjusted(-40, -40, 40, 40);
  const auto follows = [this](const schematic_line& line) { // whether the lines are consecutive on the way
    for (std::size_t i = 0; i + 1 < way_.size(); ++i)
      if ((way_[i] == line.from && way_[i + 1] == line.to) || (way_[i] == line.to && way_[i + 1] == line.from))
        return true;
    return false;
  };
  for (const schematic_line& line : shown_->picture.lines) {
    QPointF least = point(line.curve.front()), greatest = least;
    for (const schematic_point& one : line.curve) {
      least = {std::min(least.x(), one.x), std::min(least.y(), one.y)};
      greatest = {std::max(greatest.x(), one.x), std::max(greatest.y(), one.y)};
    }
    if (!in_sight.intersects(QRectF(least, greatest).adjusted(-1, -1, 1, 1))) continue;
    const bool may_follow = !way_.empty() && is_on_way_[line.from] && is_on_way_[line.to];
    paint_line(painter, line, may_follow && follows(line));
  }
  for (const schematic_box& box : shown_->picture.boxes)
    if (in_sight.intersects(rectangle_of(box))) paint_box(painter, box, !way_.empty() && is_on_way_[box.segment]);
}

void schematic_view::paint_line(QPainter& painter, const schematic_line& line, bool on_way) {
  QPen pen = line_pen(line.what, palette());
  const QColor colour = pen.color();
  if (on_way) pen.setWidthF(way_width);
  QPainterPath path(point(line.curve.front()));
  for (std::size_t i = 1; i + 2 < line.curve.size(); i += 3)
    path.cubicTo(point(line.curve[i]), point(line.curve[i + 1]), point(line.curve[i + 2]));
  painter.setBrush(Qt::NoBrush);
  painter.setPen(pen);
  painter.drawPath(path);
  if (scale_ < scale_for_marks || line.what == schematic_line::kind::bottom) return;
  const auto& curve = line.curve;
  draw_arrow_head(painter, point(curve.back()), point(curve[curve.size() - 2]), colour);
  if (line.what == schematic_line::kind::exchange)
    draw_arrow_head(painter, point(curve.front()), point(curve[1]), colour);
}

void schematic_view::paint_box(QPainter& painter, const schematic_box& box, bool on_way) {
  const QRectF place = rectangle_of(box);
  const bool is_selected = selected_ == box.segment;
  const auto value = value_of(box.segment);
  QColor ground = palette().alternateBase().color();
  if (value) {
    const double range = colouring_->greatest - colouring_->least;
    ground = colour_on_scale(range > 0 ? (*value - colouring_->least) / range : 0.5);
  }
  painter.setBrush(colouring_ && !value ? QBrush(palette().mid().color(), Qt::BDiagPattern) : QBrush(ground));
  const QColor edge = is_selected ? palette().highlight().color() : palette().text().color();
  painter.setPen(QPen(edge, is_selected ? 4 : on_way ? 2.5 : 1));
  painter.drawRoundedRect(place, 4, 4);
  if (scale_ >= scale_for_marks) paint_marks(painter, box);
  if (scale_ < scale_for_text) return;
  painter.setPen(value ? text_colour_on(ground) : palette().text().color());
  QFont font = painter.font();
  font.setPixelSize(12);
  font.setBold(true);
  painter.setFont(font);
  const QRectF text = place.adjusted(5, 2, -5, -2);
  painter.drawText(text, Qt::AlignLeft | Qt::AlignTop, QString::number(box.segment + 1));
  if (value) painter.drawText(text, Qt::AlignRight | Qt::AlignTop, number_text(*value));
  font.setBold(false);
  font.setPixelSize(11);
  painter.setFont(font);
  const QString name = shown(shown_->network.segments[box.segment].name);
  painter.drawText(text, Qt::AlignLeft | Qt::AlignBottom,
                   QFontMetricsF(font).elidedText(name, Qt::ElideRight, text.width()));
}

// Boundaries: an arrow in on the left, out on the right, in both directions between. Loads: a triangle.
void schematic_view::paint_marks(QPainter& painter, const schematic_box& box) {
  const network_segment& it = shown_->network.segments[box.segment];
  const QRectF place = rectangle_of(box);
  const QColor flow = line_pen(schematic_line::kind::flow, palette()).color();
  const QColor exchange = line_pen(schematic_line::kind::exchange, palette()).color();
  const QPointF left(place.left() + 14, place.top()), right(place.right() - 14, place.top());
  if (it.flows_in) draw_short_arrow(painter, left + QPointF(0, -20), left, flow);
  if (it.flows_out) draw_short_arrow(painter, right, right + QPointF(0, -20), flow);
  if (it.exchanges_outside)
    draw_short_arrow(painter, right + QPointF(-18, 0), right + QPointF(-18, -20), exchange, true);
  if (it.loads > 0) draw_load(painter, {place.left() + 34, place.top() + 1}, load_colour(palette()));
}

// Saving and printing.

bool schematic_view::paint_on(QPaintDevice& device, const QRect& target) {
  QPainter painter;
  if (!painter.begin(&device)) return false;
  const double by_width = static_cast<double>(target.width()) / width();
  const double scale = std::min(by_width, static_cast<double>(target.height()) / height());
  painter.translate(target.topLeft());
  painter.scale(scale, scale);
  paint_all(painter);
  return painter.end();
}

namespace {

bool save_table(const drawn_network& shown_network, const std::vector<double>* values, const QString& title,
                const QString& file_name) {
  QSaveFile file(file_name);
  if (!file.open(QIODevice::WriteOnly)) return false;
  const auto quoted = [](QByteArray text) { return "\"" + text.replace("\"", "\"\"") + "\""; };
  QByteArray text = "segment,name";
  if (values) text += "," + quoted(title.toUtf8());
  text += "\n";
  for (const schematic_box& box : shown_network.picture.boxes) {
    text += QByteArray::number(box.segment + 1) + "," +
            quoted(shown(shown_network.network.segments[box.segment].name).toUtf8());
    if (values) {
      text += ",";
      if (box.segment < values->size() && std::isfinite((*values)[box.segment]))
        text += QByteArray::number((*values)[box.segment], 'g', QLocale::FloatingPointShortest);
    }
    text += "\n";
  }
  return file.write(text) == text.size() && file.commit();
}

} // namespace

bool schematic_view::save(const QString& file_name) {
  const QString ending = ending_of(file_name);
  if (!shown_) return false;
  if (ending == "csv")
    return save_table(*shown_, colouring_ ? &colouring_->values : nullptr, colouring_ ? colouring_->title : QString(),
                      file_name);
  if (ending == "pdf") {
    QPdfWriter pdf(file_name);
    pdf.setPageSize(QPageSize(QSizeF(size()) * 0.75, QPageSize::Point));
    pdf.setPageMargins({});
    return paint_on(pdf, QRect(0, 0, pdf.width(), pdf.height()));
  }
  if (ending == "svg") {
    QSvgGenerator svg;
    svg.setFileName(file_name);
    svg.setSize(size());
    svg.setViewBox(rect());
    return paint_on(svg, rect());
  }
  QPixmap pixels(size() * 2);
  return paint_on(pixels, pixels.rect()) && pixels.save(file_name);
}

} // namespace vesk
