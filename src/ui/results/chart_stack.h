// Stacked charts over one time axis, with the commands for all of them.
#pragma once

#include "viewer/chart_rows.h"

#include <QWidget>
#include <vector>

class QAction;
class QLabel;
class QScrollArea;
class QToolBar;
class QVBoxLayout;

namespace vesk {

class chart_view;
struct picture_output;

class chart_stack final : public QWidget {
  Q_OBJECT

public:
  explicit chart_stack(QWidget* parent);

  // `without`: the sentence shown if there are no charts.
  void show_charts(std::vector<std::unique_ptr<TGraphForm>> charts, const QString& without);
  void set_cursor(std::optional<double> x);
  chart_rows& rows() { return rows_; }

  void print(); // these do nothing without charts
  void save();

signals:
  void x_clicked(double x);

private:
  void make_tools();
  QAction* add_command(const char* text, const char* tip, const QKeySequence& keys, void (chart_rows::*command)());
  void refresh(); // after a change of bounds
  picture_output picture() const;

  chart_rows rows_;
  QToolBar* tools_;
  QScrollArea* area_;
  QVBoxLayout* column_;
  QLabel* without_;
  std::vector<chart_view*> charts_; // the greatest number ever shown at once; those in use first
  QAction* unzoom_ = nullptr;
  QAction* unzoom_all_ = nullptr;
  QAction* save_ = nullptr;
  QAction* print_ = nullptr;
};

} // namespace vesk
