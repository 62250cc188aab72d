// Charts one below the other over one time axis: zoom and paging move all of them.
#pragma once

#include "charts/graph_form.h"

#include <memory>
#include <optional>
#include <vector>

namespace vesk {

// Main thread only.
class chart_rows {
public:
  // Other charts. What is zoomed into stays so where there are as many rows as before and their times still overlap.
  void show(std::vector<std::unique_ptr<TGraphForm>> rows);

  std::size_t size() const { return rows_.size(); }
  TGraphForm& operator[](std::size_t row) { return *rows_[row]; }
  const TGraphForm& operator[](std::size_t row) const { return *rows_[row]; }

  // A row's own bounds were moved by the mouse; the others follow it in time.
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

  void set_cursor(std::optional<double> x); // as the charts' own
  bool monochrome() const { return monochrome_; }
  void toggle_monochrome();

private:
  using state = std::vector<double_sextuple>; // the bounds of each row
  state bounds() const;
  void restore(const state& before);
  void zoom(void (TGraphForm::*way)());
  void page(void (TGraphForm::*way)());

  std::vector<std::unique_ptr<TGraphForm>> rows_;
  std::vector<state> zooms_; // before each zoom, newest last
  state now_;                // as last seen
  bool monochrome_ = false;
  std::optional<double> cursor_;
};

} // namespace vesk
