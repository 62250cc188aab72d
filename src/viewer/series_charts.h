// Charts of series, one chart per unit.
#pragma once

#include "charts/graph_form.h"
#include "viewer/series_store.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace vesk {

// The axis title of a chart: the unit, and the variable if the chart has only one.
std::string axis_title(const std::vector<shown_series>& series, const std::string& units);

// In the order in which the units first occur. Scenarios after the first have different line patterns. Series with
// `hidden` labels are in the chart but not drawn.
std::vector<std::unique_ptr<TGraphForm>> charts_by_unit(const std::vector<shown_series>& series, bool with_scenarios,
                                                        const std::set<std::string>& hidden);

// The value at a date-time number, interpolated linearly; not-a-number outside the series or beside a gap.
double value_at(const std::vector<double>& times, const std::vector<double>& values, double date_time);

// "3.25"; empty for not-a-number.
std::string short_number(double value);

} // namespace vesk
