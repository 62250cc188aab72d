// The page "Time series": the chosen series as charts, one per unit, and a legend with their values at the cursor.
#pragma once

#include "ui/results/chart_stack.h"
#include "ui/results/results_view.h"
#include "viewer/live_samples.h"
#include "viewer/series_store.h"

#include <set>
#include <string>

class QLabel;
class QTreeWidget;

namespace vesk {

class time_series_view final : public results_view {
public:
  // The arguments must outlive it.
  time_series_view(results_session& session, series_store& store, const live_samples& live);

  void set_results() override;
  void set_cursor() override;
  void print() override { charts_->print(); }
  void save() override { charts_->save(); }

private:
  void show_charts();
  void show_legend();
  QString why_empty() const;

  results_session& session_;
  series_store& store_;
  const live_samples& live_;
  chart_stack* charts_;
  QTreeWidget* legend_;
  QLabel* note_;
  std::set<std::string> hidden_; // labels
};

} // namespace vesk
