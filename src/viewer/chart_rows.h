// Stacked charts over one time axis, with common zoom and paging.
#pragma once

#include "charts/graph_form.h"

#include <memory>
#include <optional>
#include <vector>

namespace vesk {

// Main thread only.
class chart_rows {
public:
  // Replaces the charts. The zoom is kept if the number of rows is unchanged and their times still overlap.
  void show(std::vector<std::unique_ptr<TGraphForm>> rows);

  std::size_t size() const { return rows_.size(); }
  TGraphForm& operator[](std::size_t row) { return *rows_[row]; }
  const TGraphForm& operator[](std::size_t row) const { return *rows_[row]; }

  // The mouse has changed a row's bounds; the others follow in time.
  void row_moved(std::size_t row);
  void zoom_in_time();
  void zoom_in_value();
  void unzoom_by_one_level();
  void unzoom_completely();
  void go_to_beginning_of_data();
  void scroll_back();
  void scroll_forward();
  void go_to_end_of_data();
  bool is_zoomed() const { return !zooms_.empty(); }

  void set_cursor(std::optional<double> x); // sets the cursor of all charts
  bool monochrome() const { return monochrome_; }
  void toggle_monochrome();

private:
  using state = std::vector<double_sextuple>; // bounds of each row
  state bounds() const;
  void restore(const state& before);
  void zoom(void (TGraphForm::*way)());
  void page(void (TGraphForm::*way)());

  std::vector<std::unique_ptr<TGraphForm>> rows_;
  std::vector<state> zooms_; // before each zoom, newest last
  state now_;                // at the last change
  bool monochrome_ = false;
  std::optional<double> cursor_;
};

} // namespace vesk
