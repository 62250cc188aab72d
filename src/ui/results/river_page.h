// The page "Along the river": a variable over the distance from one segment to another.
#pragma once

#include "ui/network_watch.h"
#include "ui/results/chart_stack.h"
#include "ui/results/results_view.h"
#include "viewer/profile_store.h"
#include "viewer/river_course.h"

class QCheckBox;
class QDateTimeEdit;
class QHBoxLayout;
class QLabel;
class QTreeWidget;

namespace vesk {

class schematic_view;
class segment_box;
class variable_box;

class river_page final : public results_view {
public:
  river_page(results_session& session, network_watch::data_source data_set); // both must outlive it

  void set_results() override;
  void set_cursor() override;
  void print() override { charts_->print(); }
  void save() override { charts_->save(); }

private:
  QWidget* make_choices();
  QWidget* make_network_part();
  void take_network();
  void take_period(); // of the results, if these have changed
  std::optional<position_range> period() const;
  void course_changed();
  void show_ways();
  void show_chart();
  void show_legend(const TGraphForm* chart);
  void go_to(double x);

  results_session& session_;
  river_course course_;
  variable_box* variable_;
  segment_box* from_;
  segment_box* to_;
  QCheckBox* band_;
  QDateTimeEdit* begin_;
  QDateTimeEdit* end_;
  chart_stack* charts_;
  QHBoxLayout* legend_;
  QTreeWidget* ways_;
  schematic_view* view_;
  QLabel* note_;
  std::uint64_t period_of_ = 0; // the scenario whose times fill the two fields; 0: none
  profile_store store_;
  network_watch watch_;
};

} // namespace vesk
