#include "viewer/series_table.h"

#include "platform/single_precision.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr double half_a_second = 0.5 / 86400;
constexpr const char* value_picture = "##########.#####";

grid_column column_of(std::string header, cell_type type) {
  return {.header = std::move(header), .type = std::move(type), .editable = false};
}

} // namespace

void series_table::show(std::shared_ptr<const std::vector<double>> times, std::vector<shown_series> series,
                        bool with_scenarios, column_order order) {
  times_ = std::move(times);
  series_ = std::move(series);
  if (order == column_order::by_segment) { // segments keep the order in which they first occur
    std::vector<std::string> segments;
    for (const shown_series& it : series_)
      if (std::ranges::find(segments, it.segment) == segments.end()) segments.push_back(it.segment);
    std::ranges::stable_sort(series_, {}, [&](const shown_series& it) {
      return std::ranges::find(segments, it.segment) - segments.begin();
    });
  }
  are_single_.clear();
  for (const shown_series& it : series_) are_single_.push_back(are_in_single_precision(*it.values));
  columns_.clear();
  columns_.push_back(column_of("Date", {.kind = cell_kind::date}));
  columns_.push_back(column_of("Time", {.kind = cell_kind::time}));
  for (const shown_series& it : series_) {
    const bool by_segment = order == column_order::by_segment;
    std::string header = (by_segment ? it.segment : it.variable) + "\n" + (by_segment ? it.variable : it.segment);
    if (with_scenarios) header += "\n" + it.scenario_name;
    if (!it.units.empty()) header += " (" + it.units + ")";
    columns_.push_back(column_of(std::move(header), number_cell(value_picture)));
  }
}

cell_value series_table::value(std::size_t row, std::size_t column) const {
  if (!times_ || row >= times_->size() || column >= columns_.size()) return {};
  const double time = (*times_)[row];
  const moment_type moment = moment_type::from_date_time(time);
  if (column == 0) return static_cast<double>(moment.date);
  if (column == 1) return static_cast<double>(moment.time);
  const shown_series& it = series_[column - first_value_column];
  std::size_t at = row; // usually the times are those of the rows
  if (it.times.get() != times_.get()) at = nearest_time(*it.times, time);
  if (at >= it.values->size() || std::abs((*it.times)[at] - time) > half_a_second) return {};
  const double found = (*it.values)[at];
  if (!std::isfinite(found)) return {};
  return are_single_[column - first_value_column] ? as_printed_in_single(found) : found;
}

} // namespace vesk
