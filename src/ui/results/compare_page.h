// The page "Compare": differences of the other scenarios from the baseline.
#pragma once

#include "charts/fill_calc_table.h"
#include "ui/results/chart_stack.h"
#include "ui/results/results_view.h"
#include "viewer/differences.h"

#include <filesystem>

class QLabel;
class QPushButton;

namespace vesk {

class grid_view;

class compare_page final : public results_view {
public:
  compare_page(results_session& session, series_store& store);
  ~compare_page() override;

  void set_results() override;
  void set_cursor() override;
  void print() override { charts_->print(); }
  void save() override { charts_->save(); }

private:
  std::filesystem::path previous_run() const; // of the baseline, if it is kept and not open; empty: none
  QString why_empty() const;

  results_session& session_;
  series_store& store_;
  difference_summary summary_;
  TFillCalcTable table_{summary_};
  chart_stack* charts_;
  grid_view* view_;
  QPushButton* previous_;
  QPushButton* save_;
};

} // namespace vesk
