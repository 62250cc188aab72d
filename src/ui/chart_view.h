// Draws a TGraphForm. The only place that uses the chart library.
#pragma once

#include "charts/graph_form.h"

#include <QIcon>
#include <QWidget>
#include <optional>
#include <vector>

class QCPItemRect;
class QCPItemStraightLine;
class QCPPainter;
class QCPTextElement;
class QCustomPlot;
class QPaintDevice;

namespace vesk {

class chart_view final : public QWidget {
  Q_OBJECT

public:
  // `beside_a_grid`: small, shows a single series, no legend. `row`: one of several stacked charts with aligned axes,
  // no header.
  enum class kind { window, beside_a_grid, row };
  explicit chart_view(QWidget* parent, kind shown_as = kind::window);

  // The chart to draw; borrowed, null: none. `data_changed` rereads its series, `bounds_changed` the visible range;
  // both are drawn once, when the event loop turns.
  void show_graph(TGraphForm* graph);
  void data_changed();
  void bounds_changed();
  void cursor_changed();                             // redraws only the line
  void mark_point(std::optional<std::size_t> point); // of the first series

  // The extension selects the format: png, svg, pdf or csv. False: the file could not be written.
  static bool can_save_as(const QString& file_name);
  bool save(const QString& file_name);
  bool paint_on(QPaintDevice& device, const QRect& target); // false: cannot paint on it

  // The same for stacked charts. `rows` is not empty.
  static bool save(const std::vector<chart_view*>& rows, const QString& file_name);
  static bool paint_on(const std::vector<chart_view*>& rows, QPaintDevice& device, const QRect& target);

  // A short sample of the line, for a legend outside the chart.
  static QIcon line_icon(const line_look& look);

  QSize sizeHint() const override;

signals:
  void point_clicked(std::size_t point); // of the first series
  void bounds_moved();                   // by the mouse
  void x_clicked(double x);              // anywhere in the plot

protected:
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void take_series();
  void take_ticks();
  void take_look();
  void take_bounds();
  void take_cursor();
  int legend_columns() const;
  static QSize size_of(const std::vector<chart_view*>& rows);
  static void paint(const std::vector<chart_view*>& rows, QCPPainter& painter);
  void draw();
  void schedule();
  bool mouse(QEvent* event);
  void show_value_at(const QPointF& at);

  const kind kind_;
  QCustomPlot* plot_;
  QCPItemRect* band_;
  QPointF pressed_at_;
  QCPItemStraightLine* cursor_;
  QCPTextElement* header_ = nullptr; // null in a row
  TGraphForm* graph_ = nullptr;
  std::optional<std::size_t> marked_;
  QSize ticked_size_; // of the plot when its labels were last counted
  bool series_are_old_ = true, scheduled_ = false;
};

} // namespace vesk
