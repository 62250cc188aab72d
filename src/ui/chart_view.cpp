#undef QT_NO_FOREACH // the chart library's header uses it
#include "ui/chart_view.h"

#include "ui/measures.h"
#include "ui/texts.h"

#include <QMouseEvent>
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
constexpr double click_reach = 8; // pixels around a point
constexpr int shown_points = 400; // with fewer in sight each is drawn as a dot
constexpr std::string_view zoom_hint =
    "Drag with the left button to zoom in time, with the right button to zoom in value. "
    "Double-click to see all.";
constexpr int tick_width = 75, tick_height = 45; // pixels that a label on an axis has for itself

const QColor series_colours[] = {QColor(0x1F, 0x4E, 0x9E), QColor(0xB0, 0x30, 0x20), QColor(0x20, 0x7A, 0x3C),
                                 QColor(0x7A, 0x30, 0x90), QColor(0x90, 0x60, 0x10)};

double drawn_value(double y) {
  return std::isfinite(y) && std::abs(y) < hole_value ? y : std::numeric_limits<double>::quiet_NaN();
}

QString x_text(const TGraphForm& graph, double x, const char* format) {
  if (!graph.date_axis()) return QString::number(x, 'g', QLocale::FloatingPointShortest);
  return QDateTime::fromMSecsSinceEpoch(std::llround(x * seconds_in_a_day) * 1000, Qt::UTC).toString(format);
}

QFont font_of(int points) {
  QFont font("Arial", points);
  font.setBold(true);
  return font;
}

} // namespace

chart_view::chart_view(QWidget* parent, kind shown_as)
    : QWidget(parent), kind_(shown_as), plot_(new QCustomPlot(this)) {
  setAccessibleName("Chart");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(plot_);
  plot_->setFocusPolicy(Qt::NoFocus);
  plot_->setToolTip(shown(zoom_hint));
  plot_->setNoAntialiasingOnDrag(true);
  plot_->setNotAntialiasedElements(QCP::aeAll);
  plot_->setContextMenuPolicy(Qt::PreventContextMenu);
  plot_->plotLayout()->insertRow(0);
  auto* header = new QCPTextElement(plot_, {}, font_of(kind_ == kind::window ? 12 : 10));
  header->setObjectName("header");
  plot_->plotLayout()->addElement(0, 0, header);
  for (QCPAxis* axis : {plot_->xAxis, plot_->yAxis}) axis->setTickLabelFont(font_of(8));
  plot_->legend->setFont(font_of(8));
  if (kind_ == kind::window) { // above the plot, where it covers no point
    plot_->plotLayout()->insertRow(1);
    plot_->plotLayout()->addElement(1, 0, plot_->legend);
    plot_->plotLayout()->setRowStretchFactor(1, 0.001);
    plot_->legend->setFillOrder(QCPLegend::foColumnsFirst);
  }
  band_ = new QCPItemRect(plot_);
  band_->setLayer("overlay");
  band_->setPen(QPen(Qt::black, 1));
  band_->setBrush(QColor(0, 0, 0, 40));
  for (QCPItemPosition* corner : band_->positions()) corner->setType(QCPItemPosition::ptAbsolute);
  band_->setVisible(false);
  plot_->installEventFilter(this);
  connect(plot_, &QCustomPlot::afterLayout, this, [this] {
    const QRect area = plot_->axisRect()->rect();
    if (graph_)
      graph_->set_plot_rectangle(
          {double(area.left()), double(area.top()), double(area.right()), double(area.bottom())});
    if (!graph_ || ticked_size_ == plot_->size()) return;
    ticked_size_ = plot_->size(); // the room for labels is known only now
    take_ticks();
    plot_->replot(QCustomPlot::rpQueuedReplot);
  });
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
  // A legend without entries takes nearly all the width from the plot; what was counted then does not hold.
  if (kind_ == kind::window) ticked_size_ = QSize();
  plot_->clearGraphs();
  if (!graph_) return;
  const double scale = graph_->date_axis() ? seconds_in_a_day : 1;
  int number = 0;
  for (const auto& one : graph_->series()) {
    QCPGraph* graph = plot_->addGraph();
    graph->setName(shown(one->label));
    graph->setLineStyle(one->steps ? QCPGraph::lsStepLeft : QCPGraph::lsLine);
    graph->setPen(QPen(series_colours[number++ % std::size(series_colours)], 1));
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
  plot_->legend->setVisible(kind_ == kind::window && !graph_->series().empty());
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
  const Qt::PenStyle styles[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine, Qt::DashDotDotLine};
  for (int i = 0; i + 1 < plot_->graphCount(); ++i) {
    QPen pen(series_colours[static_cast<std::size_t>(i) % std::size(series_colours)], 1);
    if (graph_->monochrome()) pen = QPen(Qt::black, 1, styles[static_cast<std::size_t>(i) % std::size(styles)]);
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
    plot_->graph(i)->setScatterStyle(in_sight <= shown_points ? QCPScatterStyle(QCPScatterStyle::ssDisc, 4)
                                                              : QCPScatterStyle(QCPScatterStyle::ssNone));
  }
}

// As many labels as there is room for, so that none lies over another.
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
    static_cast<QCPTextElement*>(plot_->plotLayout()->element(0, 0))
        ->setText(graph_->series().empty() ? QString("No points to draw") : shown(graph_->header()));
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

// A dialog that is opened again shows everything.
void chart_view::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (event->spontaneous() || kind_ == kind::window || !graph_) return;
  graph_->unzoom_completely();
  schedule();
}

bool chart_view::eventFilter(QObject* watched, QEvent* event) {
  return (watched == plot_ && graph_ && mouse(event)) || QWidget::eventFilter(watched, event);
}

// The mouse zooms: left over time, right over values. A click without a drag chooses a point.
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
    } else if (was_zooming && mouse->button() == Qt::LeftButton) {
      const auto point = graph_->point_at(at.x(), at.y(), click_reach);
      if (point && point->series == 0) emit point_clicked(point->point);
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

// As vectors, in the proportions of the target and with texts of the size they have on the screen.
bool chart_view::paint_on(QPaintDevice& device, const QRect& target) {
  QCPPainter painter;
  if (!painter.begin(&device)) return false;
  painter.setMode(QCPPainter::pmVectorized);
  const double scale = static_cast<double>(target.width()) / plot_->width();
  painter.translate(target.topLeft());
  painter.scale(scale, scale);
  plot_->toPainter(&painter, plot_->width(), static_cast<int>(target.height() / scale));
  return painter.end();
}

namespace {

bool save_values(const TGraphForm& graph, const QString& file_name) {
  QSaveFile file(file_name);
  if (!file.open(QIODevice::WriteOnly)) return false;
  QByteArray text = "series,x,value\n";
  for (const auto& one : graph.series()) {
    QByteArray label = QByteArray::fromStdString(one->label);
    label = "\"" + label.replace("\"", "\"\"") + "\"";
    for (std::size_t i = 0; i < one->x.size(); ++i) {
      text += label + "," + x_text(graph, one->x[i], "yyyy-MM-ddTHH:mm:ss").toUtf8() + "," +
              QByteArray::number(one->y[i], 'g', QLocale::FloatingPointShortest) + "\n";
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
  const QString ending = ending_of(file_name);
  if (!graph_) return false;
  if (ending == "csv") return save_values(*graph_, file_name);
  if (ending == "pdf") return plot_->savePdf(file_name);
  if (ending == "svg") {
    QSvgGenerator svg;
    svg.setFileName(file_name);
    svg.setSize(plot_->size());
    svg.setViewBox(plot_->rect());
    QCPPainter painter;
    if (!painter.begin(&svg)) return false;
    painter.setMode(QCPPainter::pmVectorized);
    plot_->toPainter(&painter, plot_->width(), plot_->height());
    return painter.end();
  }
  return plot_->savePng(file_name, 0, 0, 2);
}

} // namespace vesk
