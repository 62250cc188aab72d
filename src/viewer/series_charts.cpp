#include "viewer/series_charts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vesk {

namespace {

std::unique_ptr<general_graph_data> graph_data(const shown_series& series) {
  auto data = std::make_unique<general_graph_data>(0);
  data->x = *series.times;
  for (double& x : data->x) x -= days_to_1970;
  data->y = *series.values;
  data->count = static_cast<std::int32_t>(data->x.size());
  data->look.emplace(line_look{.colour = series.colour, .pattern = series.scenario});
  return data;
}

} // namespace

std::string axis_title(const std::vector<shown_series>& series, const std::string& units) {
  std::string variable;
  for (const shown_series& it : series) {
    if (it.units != units) continue;
    if (!variable.empty() && variable != it.variable) return units.empty() ? "without unit" : units;
    variable = it.variable;
  }
  return units.empty() ? variable : variable + ", " + units;
}

std::vector<std::unique_ptr<TGraphForm>> charts_by_unit(const std::vector<shown_series>& series, bool with_scenarios,
                                                        const std::set<std::string>& hidden) {
  std::vector<std::string> units;
  std::vector<std::vector<std::unique_ptr<general_graph_data>>> data_of;
  for (const shown_series& it : series) {
    const auto known = std::ranges::find(units, it.units);
    const auto at = static_cast<std::size_t>(known - units.begin());
    if (known == units.end()) {
      units.push_back(it.units);
      data_of.emplace_back();
    }
    auto data = graph_data(it);
    data->label = it.label(with_scenarios);
    data->look->hidden = hidden.contains(data->label);
    data_of[at].push_back(std::move(data));
  }
  std::vector<std::unique_ptr<TGraphForm>> charts;
  for (std::size_t i = 0; i < units.size(); ++i) {
    charts.push_back(std::make_unique<TGraphForm>());
    charts.back()->set_titles({}, axis_title(series, units[i]));
    charts.back()->add_series(std::move(data_of[i]));
  }
  return charts;
}

double value_at(const std::vector<double>& times, const std::vector<double>& values, double date_time) {
  const auto after = std::ranges::lower_bound(times, date_time);
  const auto at = static_cast<std::size_t>(after - times.begin());
  if (at == times.size()) return std::numeric_limits<double>::quiet_NaN();
  if (times[at] == date_time) return values[at];
  if (at == 0) return std::numeric_limits<double>::quiet_NaN();
  const double part = (date_time - times[at - 1]) / (times[at] - times[at - 1]);
  return values[at - 1] + (values[at] - values[at - 1]) * part;
}

std::string short_number(double value) {
  if (!std::isfinite(value)) return {};
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

} // namespace vesk
