#include "results/comparison.h"

#include "query/import_query.h"

#include <algorithm>
#include <limits>

namespace vesk {

namespace {

std::string shown_name(const measured_series& series) {
  return series.name.empty() ? series.query.file_name + ", field " + series.query.value_field : series.name;
}

void require_same_units(const measured_series& series, const results_variable& variable) {
  if (series.factor || series.units.empty() || series.units == variable.units) return;
  throw comparison_exception(shown_name(series) + ": measured in \"" + series.units + "\", but " + variable.name +
                             " is in \"" + variable.units +
                             "\"; give the factor between them, which is 1 for two names of one unit.");
}

std::vector<measurement> within_period(std::vector<measurement> values, const measured_series& series) {
  const double from = series.from.value_or(-std::numeric_limits<double>::infinity());
  const double to = series.to.value_or(std::numeric_limits<double>::infinity());
  std::erase_if(values, [&](const measurement& it) { return it.time < from || it.time > to; });
  return values;
}

[[noreturn]] void fail_without_pairs(const results_file& results, const comparison& found) {
  const std::string period = text_of_moment(results.times().front()) + " to " + text_of_moment(results.times().back());
  std::string cause = "has no measured value";
  if (found.measured > 0 && found.paired.below_limit == found.measured)
    cause = "has only values below a detection limit";
  else if (found.measured > 0)
    cause = "has no measured value at a time for which the results, which cover " + period + ", have one";
  else if (found.series.from || found.series.to)
    cause += " in the period that is compared";
  throw comparison_exception(shown_name(found.series) + ": " + cause + ".");
}

std::vector<measurement> measurements_of(const std::vector<pair_at>& pairs) {
  std::vector<measurement> result;
  for (const pair_at& it : pairs) result.push_back({it.time, it.measured});
  return result;
}

} // namespace

std::vector<estimate_series> read_estimates(const std::string& file, const std::filesystem::path& folder) {
  import_query table({}, folder);
  table.set_file(file);
  const auto& types = table.field_types;
  const auto moment = std::ranges::find_if(types, [](field_type type) { return is_date_or_time(type); });
  if (moment == types.end())
    throw query_engine_exception(file + ": has no column of dates and times, or several tables.");
  std::vector<estimate_series> result;
  for (std::size_t i = 0; i < types.size(); ++i) {
    if (!is_number(types[i])) continue;
    measured_series column;
    column.query.file_name = file;
    column.query.date_time_field = table.field_names[static_cast<std::size_t>(moment - types.begin())];
    column.query.value_field = table.field_names[i];
    estimate_series& estimate = result.emplace_back();
    estimate.name = table.field_names[i];
    for (const measurement& it : read_measured_values(column, folder).values) {
      estimate.values.times.push_back(it.time);
      estimate.values.values.push_back(it.value);
    }
  }
  if (result.empty()) throw query_engine_exception(file + ": has no column of numbers.");
  return result;
}

comparison compare(const results_file& results, const measured_series& series,
                   const std::vector<estimate_series>& others, const std::filesystem::path& folder) {
  comparison result{.series = series,
                    .variable = results.find_variable(series.variable),
                    .segment = results.find_segment(series.segment)};
  require_same_units(series, results.variables()[result.variable]);
  measured_values table = read_measured_values(series, folder);
  result.without_value = table.without_value;
  std::vector<measurement> measured = within_period(std::move(table.values), series);
  for (measurement& it : measured) it.value *= series.factor.value_or(1);
  result.measured = measured.size();
  const modelled_series model{results.times(), results.series(result.variable, result.segment)};
  result.paired = pair_up(std::move(measured), model, series.rules);
  const auto& pairs = result.paired.pairs;
  if (pairs.empty()) fail_without_pairs(results, result);
  result.estimates.push_back({model_estimate, scores_by_month(pairs)});
  for (const estimate_series& other : others) {
    const pairing of_other = pair_up(measurements_of(pairs), other.values, series.rules);
    result.estimates.push_back({other.name, scores_by_month(of_other.pairs)});
  }
  result.estimates.push_back({monthly_estimate, scores_by_month(with_monthly_means(pairs))});
  return result;
}

} // namespace vesk
