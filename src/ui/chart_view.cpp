#undef QT_NO_FOREACH // the chart library's header uses it
#include "ui/chart_view.h"

#include "platform/single_precision.h"
#include "ui/measures.h"
#include "ui/texts.h"
#include "viewer/kept_colours.h"

#include <QMouseEvent>
#include <QPdfWriter>
#include <QSaveFile>
#include <QShowEvent>
#include <QSvgGenerator>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <limits>
#include <qcustomplot.h>

namespace vesk {

namespace {

constexpr double seconds_in_a_day = 86400;
constexpr double least_drag = 3;                     // pixels; less is a click
constexpr double click_reach = 8;                    // pixels around a point
constexpr int shown_points = 400, shown_in_row = 60; // with fewer visible, each is drawn as a dot
constexpr std::string_view zoom_hint =
    "Drag with the left button to zoom in time, with the right button to zoom in value. "
    "Double-click to see all.";
constexpr int tick_width = 75, tick_height = 45; // pixels reserved for each axis label

const QColor series_colours[] = {QColor(0x1F, 0x4E, 0x9E), QColor(0xB0, 0x30, 0x20), QColor(0x20, 0x7A, 0x3C),
                                 QColor(0x7A, 0x30, 0x90), QColor(0x90, 0x60, 0x10), QColor(0x00, 0x7C, 0x8A),
                                 QColor(0xC0, 0x40, 0x80), QColor(0x55, 0x55, 0x55), QColor(0xD0, 0x6A, 0x00),
                                 QColor(0x4A, 0x6A, 0x2A)};
static_assert(std::size(series_colours) == kept_colours::palette);
constexpr Qt::PenStyle line_patterns[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine,
                                          Qt::DashDotDotLine};
constexpr int row_margin_left = 72, row_margin_right = 18; // pixels beside the plots of rows
constexpr int most_in_legend = 12;                         // of a row: more would leave too little room for its plot

template <class Value, std::size_t size>
Value nth(const Value (&values)[size], std::size_t n) {
  return values[n % size];
}

double drawn_value(double y) {
  return std::isfinite(y) && std::abs(y) < hole_value ? y : std::numeric_limits<double>::quiet_NaN();
}

QString x_text(const TGraphForm& graph, double x, const char* format) {
  if (!graph.date_axis()) return QString::number(x, 'g', QLocale::FloatingPointShortest);
  return QDateTime::fromMSecsSinceEpoch(std::llround(x * seconds_in_a_day) * 1000, Qt::UTC).toString(format);
}

QFont font_of(int points, bool bold = true) {
  QFont font("Arial", points);
  font.setBold(bold);
  return font;
}

} // namespace

chart_view::chart_view(QWidget* parent, kind shown_as)
    : QWidget(parent), kind_(shown_as), plot_(new QCustomPlot(this)), cursor_(new QCPItemStraightLine(plot_)) {
  setAccessibleName("Chart");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(plot_);
  plot_->setFocusPolicy(Qt::NoFocus);
  plot_->setToolTip(shown(zoom_hint));
  plot_->setNoAntialiasingOnDrag(true);
  plot_->setNotAntialiasedElements(QCP::aeAll);
  plot_->setContextMenuPolicy(Qt::PreventContextMenu);
  if (kind_ == kind::row) {
    plot_->axisRect()->setAutoMargins(QCP::msTop | QCP::msBottom);
    plot_->axisRect()->setMargins({scaled(row_margin_left, *this), 0, scaled(row_margin_right, *this), 0});
    plot_->xAxis->grid()->setSubGridVisible(false);
    setFocusPolicy(Qt::StrongFocus);
  } else {
    plot_->plotLayout()->insertRow(0);
    header_ = new QCPTextElement(plot_, {}, font_of(kind_ == kind::window ? 12 : 10));
    header_->setObjectName("header");
    plot_->plotLayout()->addElement(0, 0, header_);
  }
  for (QCPAxis* axis : {plot_->xAxis, plot_->yAxis}) axis->setTickLabelFont(font_of(8));
  plot_->legend->setFont(font_of(8, kind_ != kind::row));
  if (kind_ != kind::beside_a_grid) { // above the plot, where it covers no points
    const int row = kind_ == kind::window ? 1 : 0;
    plot_->plotLayout()->insertRow(row);
    plot_->plotLayout()->addElement(row, 0, plot_->legend);
    plot_->plotLayout()->setRowStretchFactor(row, 0.001);
    plot_->legend->setFillOrder(QCPLegend::foColumnsFirst);
  }
  band_ = new QCPItemRect(plot_);
  band_->setLayer("overlay");
  band_->setPen(QPen(Qt::black, 1));
  band_->setBrush(QColor(0, 0, 0, 40));
  for (QCPItemPosition* corner : band_->positions()) corner->setType(QCPItemPosition::ptAbsolute);
  band_->setVisible(false);
  cursor_->setLayer("overlay");
  cursor_->setPen(QPen(QColor(0x40, 0x40, 0x40), 1, Qt::DashLine));
  cursor_->setVisible(false);
  plot_->installEventFilter(this);
  connect(plot_, &QCustomPlot::afterLayout, this, [this] {
    const QRect area = plot_->axisRect()->rect();
    if (graph_)
      graph_->set_plot_rectangle(
          {double(area.left()), double(area.top()), double(area.right()), double(area.bottom())});
    if (!graph_ || ticked_size_ == plot_->size()) return;
    ticked_size_ = plot_->size(); // the room for labels is only known now
    take_ticks();
    plot_->replot(QCustomPlot::rpQueuedReplot);
  });
}

QIcon chart_view::line_icon(const line_look& look) {
  constexpr int length = 28, height = 14, sharpness = 2;
  QPixmap picture(QSize(length, height) * sharpness);
  picture.setDevicePixelRatio(sharpness);
  picture.fill(Qt::white); // as in the chart, regardless of the palette
  QPainter painter(&picture);
  painter.setPen(QPen(nth(series_colours, look.colour), 2, nth(line_patterns, look.pattern)));
  painter.drawLine(2, height / 2, length - 2, height / 2);
  return picture;
}

QSize chart_view::sizeHint() const {
  return {scaled(520, *this), scaled(300, *this)};
}

void chart_view::show_graph(TGraphForm* graph) {
  graph_ = graph;
  data_changed();
}

void chart_view::data_changed() {
  series_are_old_ = true;
  schedule();
}

void chart_view::bounds_changed() {
  schedule();
}

void chart_view::cursor_changed() {
  if (scheduled_ || !graph_) return;
  take_cursor();
  plot_->layer("overlay")->replot();
}

void chart_view::mark_point(std::optional<std::size_t> point) {
  if (point == marked_) return;
  marked_ = point;
  schedule();
}

void chart_view::schedule() {
  if (std::exchange(scheduled_, true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        scheduled_ = false;
        draw();
      },
      Qt::QueuedConnection);
}

void chart_view::take_series() {
  series_are_old_ = false;
  // An empty legend takes most of the plot's width, so the label count from before no longer holds.
  if (kind_ != kind::beside_a_grid) ticked_size_ = QSize();
  plot_->clearGraphs();
  if (!graph_) return;
  if (kind_ == kind::row) plot_->legend->setWrap(legend_columns());
  const double scale = graph_->date_axis() ? seconds_in_a_day : 1;
  for (const auto& one : graph_->series()) {
    QCPGraph* graph = plot_->addGraph();
    graph->setName(shown(one->label));
    const bool dots = one->look && one->look->dots;
    graph->setLineStyle(dots ? QCPGraph::lsNone : one->steps ? QCPGraph::lsStepLeft : QCPGraph::lsLine);
    graph->setVisible(!one->is_hidden());
    if (one->is_hidden()) graph->removeFromLegend();
    QVector<QCPGraphData> points(static_cast<qsizetype>(one->x.size()));
    for (std::size_t i = 0; i < one->x.size(); ++i)
      points[static_cast<qsizetype>(i)] = {one->x[i] * scale, drawn_value(one->y[i])};
    graph->data()->set(points, true);
  }
  if (graph_->date_axis()) {
    const QSharedPointer<QCPAxisTickerDateTime> ticks(new QCPAxisTickerDateTime); // its steps suit a calendar
    ticks->setDateTimeSpec(Qt::UTC);
    plot_->xAxis->setTicker(ticks);
  } else {
    plot_->xAxis->setTicker(QSharedPointer<QCPAxisTicker>(new QCPAxisTicker));
  }
  if (kind_ == kind::row && plot_->legend->itemCount() > most_in_legend) plot_->legend->clearItems(); // also its room
  plot_->legend->setVisible(kind_ != kind::beside_a_grid && plot_->legend->itemCount() > 0);
  QCPGraph* mark = plot_->addGraph();
  mark->removeFromLegend();
  mark->setLineStyle(QCPGraph::lsNone);
  mark->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssCircle, Qt::black, 10));
}

void chart_view::take_look() {
  const TGraphForm::look look = graph_->present_look();
  plot_->setBackground(QColor(look.backgrounds[0]));
  plot_->axisRect()->setBackground(QColor(look.backgrounds[2]));
  plot_->legend->setBrush(QColor(look.backgrounds[1]));
  if (kind_ == kind::row) {
    plot_->setBackground(Qt::white);
    plot_->axisRect()->setBackground(Qt::white);
    plot_->legend->setBrush(Qt::white);
    plot_->legend->setBorderPen(Qt::NoPen);
  }
  for (int i = 0; i + 1 < plot_->graphCount(); ++i) {
    const auto at = static_cast<std::size_t>(i);
    const line_look of_series = graph_->series()[at]->look.value_or(line_look{.colour = at});
    QPen pen(nth(series_colours, of_series.colour), 1, nth(line_patterns, of_series.pattern));
    if (graph_->monochrome()) pen = QPen(Qt::black, 1, nth(line_patterns, at));
    plot_->graph(i)->setPen(pen);
  }
}

void chart_view::take_bounds() {
  const double scale = graph_->date_axis() ? seconds_in_a_day : 1;
  const double_sextuple& bounds = graph_->bounds();
  plot_->xAxis->setRange(bounds.x_minimum * scale, bounds.x_maximum * scale);
  plot_->yAxis->setRange(bounds.first_minimum, bounds.first_maximum);
  if (auto ticks = plot_->xAxis->ticker().dynamicCast<QCPAxisTickerDateTime>()) {
    const double days = bounds.x_maximum - bounds.x_minimum;
    ticks->setDateTimeFormat(days > 3 ? "d MMM\nyyyy" : "d MMM\nhh:mm");
  }
  take_ticks();
  for (int i = 0; i + 1 < plot_->graphCount(); ++i) {
    const auto& points = *plot_->graph(i)->data();
    const QCPRange x = plot_->xAxis->range();
    const auto in_sight = points.findEnd(x.upper, false) - points.findBegin(x.lower, false);
    const bool as_dots = plot_->graph(i)->lineStyle() == QCPGraph::lsNone;
    const int few = kind_ == kind::row ? shown_in_row : shown_points;
    const auto shape = in_sight <= few || as_dots ? QCPScatterStyle::ssDisc : QCPScatterStyle::ssNone;
    plot_->graph(i)->setScatterStyle(QCPScatterStyle(shape, as_dots ? 5 : 4));
  }
}

// Columns of a row's legend, which wraps to the row's width.
int chart_view::legend_columns() const {
  int widest = 1;
  for (const auto& one : graph_->series())
    if (!one->is_hidden())
      widest = std::max(widest, QFontMetrics(plot_->legend->font()).horizontalAdvance(shown(one->label)));
  return std::max(1, (width() - scaled(20, *this)) / (widest + scaled(60, *this)));
}

void chart_view::take_cursor() {
  const auto x = graph_->cursor();
  cursor_->setVisible(x.has_value());
  if (!x) return;
  const double at = *x * (graph_->date_axis() ? seconds_in_a_day : 1);
  cursor_->point1->setCoords(at, 0);
  cursor_->point2->setCoords(at, 1);
}

// As many labels as fit without overlap.
void chart_view::take_ticks() {
  const QRect area = plot_->axisRect()->rect();
  plot_->xAxis->ticker()->setTickCount(std::clamp(area.width() / scaled(tick_width, *this), 2, 10));
  plot_->yAxis->ticker()->setTickCount(std::clamp(area.height() / scaled(tick_height, *this), 2, 10));
}

void chart_view::draw() {
  if (series_are_old_) take_series();
  if (graph_) {
    take_look();
    take_bounds();
    take_cursor();
    plot_->xAxis->setLabel(shown(graph_->x_title()));
    plot_->yAxis->setLabel(shown(graph_->value_title()));
    if (header_) header_->setText(graph_->series().empty() ? QString("No points to draw") : shown(graph_->header()));
    setAccessibleDescription(shown(graph_->summary()));
    QVector<QCPGraphData> mark;
    const auto& series = graph_->series();
    if (marked_ && !series.empty() && *marked_ < series.front()->x.size())
      mark = {{series.front()->x[*marked_] * (graph_->date_axis() ? seconds_in_a_day : 1),
               drawn_value(series.front()->y[*marked_])}};
    if (plot_->graphCount() > 0) plot_->graph(plot_->graphCount() - 1)->data()->set(mark);
  }
  plot_->replot();
}

// A reopened dialog shows the whole range.
void chart_view::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (event->spontaneous() || kind_ != kind::beside_a_grid || !graph_) return;
  graph_->unzoom_completely();
  schedule();
}

bool chart_view::eventFilter(QObject* watched, QEvent* event) {
  return (watched == plot_ && graph_ && mouse(event)) || QWidget::eventFilter(watched, event);
}

// Dragging zooms: left button over time, right over values. A click without a drag selects a point.
bool chart_view::mouse(QEvent* event) {
  const bool press = event->type() == QEvent::MouseButtonPress, release = event->type() == QEvent::MouseButtonRelease;
  if (event->type() == QEvent::MouseButtonDblClick) {
    graph_->unzoom_completely();
    emit bounds_moved();
    schedule();
    return true;
  }
  if (!press && !release && event->type() != QEvent::MouseMove) return false;
  const auto* mouse = static_cast<QMouseEvent*>(event);
  const QPointF at = mouse->position();
  if (press) {
    pressed_at_ = at;
    if (mouse->button() == Qt::LeftButton)
      graph_->press(TGraphForm::mouse_button::left, at.x(), at.y());
    else if (mouse->button() == Qt::RightButton)
      graph_->press(TGraphForm::mouse_button::right, at.x(), at.y());
  } else if (release) {
    const std::size_t levels = graph_->zoom_levels();
    const bool was_zooming = graph_->zooming();
    graph_->release(at.x(), at.y());
    if (graph_->zoom_levels() != levels) {
      emit bounds_moved();
      schedule();
    } else if (was_zooming && mouse->button() == Qt::LeftButton && (at - pressed_at_).manhattanLength() < least_drag) {
      const auto point = graph_->point_at(at.x(), at.y(), click_reach);
      if (point && point->series == 0) emit point_clicked(point->point);
      emit x_clicked(graph_->x_at(at.x()));
    }
  } else {
    graph_->move(at.x(), at.y());
    if (!graph_->zooming()) show_value_at(at);
  }
  const plot_rectangle& band = graph_->band();
  band_->topLeft->setCoords(band.left, band.top);
  band_->bottomRight->setCoords(band.right, band.bottom);
  band_->setVisible(graph_->zooming());
  plot_->layer("overlay")->replot();
  return true;
}

void chart_view::show_value_at(const QPointF& at) {
  const auto place = graph_->point_at(at.x(), at.y(), click_reach);
  if (!place) return plot_->setToolTip(shown(zoom_hint));
  const general_graph_data& series = *graph_->series()[place->series];
  const QString y = QString::number(series.y[place->point], 'g', QLocale::FloatingPointShortest);
  plot_->setToolTip(
      tool_tip(shown(series.label) + "\n" + x_text(*graph_, series.x[place->point], "d MMM yyyy hh:mm") + ": " + y));
}

QSize chart_view::size_of(const std::vector<chart_view*>& rows) {
  int height = 0;
  for (const chart_view* row : rows) height += row->plot_->height();
  return {rows.front()->plot_->width(), height};
}

void chart_view::paint(const std::vector<chart_view*>& rows, QCPPainter& painter) {
  for (chart_view* row : rows) {
    row->plot_->toPainter(&painter, row->plot_->width(), row->plot_->height());
    painter.translate(0, row->plot_->height());
  }
}

// As vectors, in the proportions of the target, with text sized as on the screen.
bool chart_view::paint_on(const std::vector<chart_view*>& rows, QPaintDevice& device, const QRect& target) {
  QCPPainter painter;
  if (!painter.begin(&device)) return false;
  painter.setMode(QCPPainter::pmVectorized);
  const double scale = static_cast<double>(target.width()) / rows.front()->plot_->width();
  painter.translate(target.topLeft());
  painter.scale(scale, scale);
  if (rows.size() == 1) {
    QCustomPlot& plot = *rows.front()->plot_;
    plot.toPainter(&painter, plot.width(), static_cast<int>(target.height() / scale));
  } else {
    const double too_high = size_of(rows).height() * scale / target.height();
    if (too_high > 1) painter.scale(1 / too_high, 1 / too_high);
    paint(rows, painter);
  }
  return painter.end();
}

bool chart_view::paint_on(QPaintDevice& device, const QRect& target) {
  return paint_on({this}, device, target);
}

namespace {

bool save_values(const std::vector<const TGraphForm*>& graphs, const QString& file_name) {
  QSaveFile file(file_name);
  if (!file.open(QIODevice::WriteOnly)) return false;
  QByteArray text = "series,x,value\n";
  for (const TGraphForm* graph : graphs)
    for (const auto& one : graph->series()) {
      if (one->is_hidden()) continue;
      QByteArray label = QByteArray::fromStdString(one->label);
      label = "\"" + label.replace("\"", "\"\"") + "\"";
      const bool is_single = are_in_single_precision(one->y);
      for (std::size_t i = 0; i < one->x.size(); ++i) {
        text += label + "," + x_text(*graph, one->x[i], "yyyy-MM-ddTHH:mm:ss").toUtf8() + "," +
                QByteArray::number(is_single ? as_printed_in_single(one->y[i]) : one->y[i], 'g',
                                   QLocale::FloatingPointShortest) +
                "\n";
      }
    }
  return file.write(text) == text.size() && file.commit();
}

QString ending_of(const QString& file_name) {
  return QFileInfo(file_name).suffix().toLower();
}

} // namespace

bool chart_view::can_save_as(const QString& file_name) {
  return QStringList{"png", "svg", "pdf", "csv"}.contains(ending_of(file_name));
}

bool chart_view::save(const QString& file_name) {
  return save({this}, file_name);
}

bool chart_view::save(const std::vector<chart_view*>& rows, const QString& file_name) {
  const QString ending = ending_of(file_name);
  std::vector<const TGraphForm*> graphs;
  for (const chart_view* row : rows) {
    if (!row->graph_) return false;
    graphs.push_back(row->graph_);
  }
  if (ending == "csv") return save_values(graphs, file_name);
  const QSize size = size_of(rows);
  if (ending == "pdf") {
    QPdfWriter pdf(file_name);
    constexpr double points_in_a_pixel = 0.75;
    pdf.setPageSize(QPageSize(QSizeF(size) * points_in_a_pixel, QPageSize::Point));
    pdf.setPageMargins({});
    return paint_on(rows, pdf, {0, 0, pdf.width(), pdf.height()});
  }
  QCPPainter painter;
  if (ending == "svg") {
    QSvgGenerator svg;
    svg.setFileName(file_name);
    svg.setSize(size);
    svg.setViewBox(QRect({0, 0}, size));
    if (!painter.begin(&svg)) return false;
    painter.setMode(QCPPainter::pmVectorized);
    paint(rows, painter);
    return painter.end();
  }
  constexpr int sharpness = 2;
  QImage picture(size * sharpness, QImage::Format_RGB32);
  picture.fill(Qt::white);
  painter.begin(&picture);
  painter.setMode(QCPPainter::pmNoCaching);
  painter.scale(sharpness, sharpness);
  paint(rows, painter);
  painter.end();
  return picture.save(file_name);
}

} // namespace vesk
