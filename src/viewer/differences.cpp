#include "viewer/differences.h"

#include "results/measured_series.h"
#include "viewer/series_charts.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr const char* value_picture = "##########.#####";

const shown_series* same_in(const std::vector<shown_series>& series, std::size_t scenario, const shown_series& wanted) {
  const auto found = std::ranges::find_if(series, [&](const shown_series& it) {
    return it.scenario == scenario && it.variable == wanted.variable && it.segment == wanted.segment;
  });
  return found == series.end() ? nullptr : &*found;
}

// Mean of the finite values, and the value furthest from 0 with its time.
struct summary {
  std::size_t count = 0;
  double sum = 0, greatest = 0, time = 0;
};

summary summary_of(const shown_series& series) {
  summary found;
  for (std::size_t i = 0; i < series.values->size(); ++i) {
    const double value = (*series.values)[i];
    if (!std::isfinite(value)) continue;
    ++found.count;
    found.sum += value;
    if (found.count > 1 && std::abs(value) <= std::abs(found.greatest)) continue;
    found.greatest = value;
    found.time = (*series.times)[i];
  }
  return found;
}

} // namespace

std::vector<shown_series> differences(const std::vector<shown_series>& series, std::size_t baseline) {
  std::vector<shown_series> found;
  for (const shown_series& it : series) {
    if (it.scenario == baseline) continue;
    const shown_series* base = same_in(series, baseline, it);
    if (!base || base->units != it.units) continue;
    auto values = std::make_shared<std::vector<double>>(base->values->size());
    const bool same_times = *it.times == *base->times;
    for (std::size_t i = 0; i < values->size(); ++i) {
      const double other = same_times ? (*it.values)[i] : value_at(*it.times, *it.values, (*base->times)[i]);
      (*values)[i] = other - (*base->values)[i];
    }
    shown_series& made = found.emplace_back(it);
    made.times = base->times;
    made.values = std::move(values);
  }
  return found;
}

difference_summary::difference_summary() {
  for (const char* text : {"Scenario", "Variable", "Segment"})
    columns_.push_back({.header = text, .type = text_cell(), .editable = false});
  for (const char* number : {"Mean of\nthe baseline", "Mean\ndifference", "Per cent", "Greatest\ndifference"})
    columns_.push_back({.header = number, .type = number_cell(value_picture), .editable = false});
  columns_.push_back({.header = "at", .type = text_cell(), .editable = false});
}

void difference_summary::show(const std::vector<shown_series>& differences, const std::vector<shown_series>& series,
                              std::size_t baseline) {
  rows_.clear();
  for (const shown_series& it : differences) {
    const summary change = summary_of(it);
    const summary base = summary_of(*same_in(series, baseline, it));
    std::vector<cell_value>& row = rows_.emplace_back(columns_.size());
    row[0] = it.scenario_name;
    row[1] = it.variable + (it.units.empty() ? "" : " (" + it.units + ")");
    row[2] = it.segment;
    if (base.count > 0) row[3] = base.sum / static_cast<double>(base.count);
    if (change.count == 0) continue;
    const double mean = change.sum / static_cast<double>(change.count);
    row[4] = mean;
    if (base.count > 0 && base.sum != 0) row[5] = 100 * mean / (base.sum / static_cast<double>(base.count));
    row[6] = change.greatest;
    row[7] = text_of_moment(change.time);
  }
}

cell_value difference_summary::value(std::size_t row, std::size_t column) const {
  return row < rows_.size() && column < columns_.size() ? rows_[row][column] : cell_value();
}

} // namespace vesk
