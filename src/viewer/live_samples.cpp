#include "viewer/live_samples.h"

#include <algorithm>

namespace vesk {

void live_samples::clear() {
  series_.clear();
  last_ = 0;
}

bool live_samples::sample(double date_time, const std::vector<live_cell>& cells,
                          const std::function<std::optional<double>(int row, int column)>& read) {
  if (date_time == last_) return false;
  if (date_time < last_) clear(); // a new run
  last_ = date_time;
  bool is_new = false;
  for (const live_cell& cell : cells) {
    const auto value = read(cell.row, cell.column);
    if (!value) continue;
    auto known = std::ranges::find_if(
        series_, [&](const cell_series& it) { return it.cell.row == cell.row && it.cell.column == cell.column; });
    if (known == series_.end()) {
      if (series_.size() >= most_cells) continue;
      known = series_.insert(series_.end(), {cell, {}, {}});
    }
    if (known->times.size() >= most_samples) continue;
    known->times.push_back(date_time);
    known->values.push_back(*value);
    is_new = true;
  }
  return is_new;
}

std::unique_ptr<TGraphForm> live_samples::chart() const {
  if (series_.empty()) return nullptr;
  std::vector<std::unique_ptr<general_graph_data>> all;
  for (std::size_t i = 0; i < series_.size(); ++i) {
    auto data = std::make_unique<general_graph_data>(0);
    data->x = series_[i].times;
    for (double& x : data->x) x -= days_to_1970;
    data->y = series_[i].values;
    data->count = static_cast<std::int32_t>(data->x.size());
    data->label = series_[i].cell.label;
    data->look = line_look{.colour = i, .dots = true};
    all.push_back(std::move(data));
  }
  auto chart = std::make_unique<TGraphForm>();
  chart->set_titles({}, "current run");
  chart->add_series(std::move(all));
  return chart;
}

} // namespace vesk
