#include "viewer/chart_rows.h"

#include <algorithm>
#include <limits>

namespace vesk {

void chart_rows::show(std::vector<std::unique_ptr<TGraphForm>> rows) {
  const state seen = bounds();
  const bool was_zoomed = is_zoomed();
  rows_ = std::move(rows);
  double begin = std::numeric_limits<double>::infinity(), end = -begin;
  for (const auto& row : rows_)
    if (row->has_points()) {
      begin = std::min(begin, row->data_begin());
      end = std::max(end, row->data_end());
    }
  if (begin <= end)
    for (const auto& row : rows_) row->set_data_range(begin, end);
  for (const auto& row : rows_) {
    if (monochrome_) row->toggle_monochrome();
    row->set_cursor(cursor_);
  }
  zooms_.clear();
  now_ = bounds();
  const bool overlaps = was_zoomed && !seen.empty() && seen.front().x_minimum < end && seen.front().x_maximum > begin;
  if (!overlaps) return;
  zooms_.push_back(now_);
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    double_sextuple wanted = now_[i];
    wanted.x_minimum = seen.front().x_minimum;
    wanted.x_maximum = seen.front().x_maximum;
    rows_[i]->set_bounds(wanted);
  }
  now_ = bounds();
}

chart_rows::state chart_rows::bounds() const {
  state result;
  for (const auto& row : rows_) result.push_back(row->bounds());
  return result;
}

void chart_rows::restore(const state& before) {
  for (std::size_t i = 0; i < rows_.size() && i < before.size(); ++i) rows_[i]->set_bounds(before[i]);
  now_ = bounds();
}

void chart_rows::row_moved(std::size_t row) {
  if (row >= rows_.size()) return;
  if (rows_[row]->zoom_levels() == 0) return unzoom_completely();
  zooms_.push_back(now_);
  const double_sextuple lead = rows_[row]->bounds();
  for (const auto& other : rows_) {
    double_sextuple wanted = other->bounds();
    wanted.x_minimum = lead.x_minimum;
    wanted.x_maximum = lead.x_maximum;
    other->set_bounds(wanted);
  }
  now_ = bounds();
}

void chart_rows::zoom(void (TGraphForm::*way)()) {
  for (const auto& row : rows_) (row.get()->*way)();
  const state after = bounds();
  if (after == now_) return;
  zooms_.push_back(std::exchange(now_, after));
}

void chart_rows::page(void (TGraphForm::*way)()) {
  for (const auto& row : rows_) (row.get()->*way)();
  now_ = bounds();
}

void chart_rows::zoom_in_time() {
  zoom(&TGraphForm::zoom_in_time);
}
void chart_rows::zoom_in_value() {
  zoom(&TGraphForm::zoom_in_value);
}
void chart_rows::go_to_beginning_of_data() {
  page(&TGraphForm::go_to_beginning_of_data);
}
void chart_rows::scroll_back() {
  page(&TGraphForm::scroll_back);
}
void chart_rows::scroll_forward() {
  page(&TGraphForm::scroll_forward);
}
void chart_rows::go_to_end_of_data() {
  page(&TGraphForm::go_to_end_of_data);
}

void chart_rows::unzoom_by_one_level() {
  if (zooms_.empty()) return;
  const state before = std::move(zooms_.back());
  zooms_.pop_back();
  restore(before);
  if (zooms_.empty())
    for (const auto& row : rows_) row->forget_zooms();
}

void chart_rows::unzoom_completely() {
  if (!zooms_.empty()) restore(zooms_.front());
  zooms_.clear();
  for (const auto& row : rows_) row->forget_zooms();
}

void chart_rows::set_cursor(std::optional<double> x) {
  cursor_ = x;
  for (const auto& row : rows_) row->set_cursor(x);
}

void chart_rows::toggle_monochrome() {
  monochrome_ = !monochrome_;
  for (const auto& row : rows_) row->toggle_monochrome();
}

} // namespace vesk
