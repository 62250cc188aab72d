// Reads measured values from their table.
#include "dataset/dataset.h"
#include "query/import_query.h"
#include "query/sources/text/number_text.h"
#include "results/measured_series.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr std::size_t moment_column = 0, value_column = 1;

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

// A number, or a detection limit: "<0.02", "< 0,02".
std::optional<measurement> measurement_of(double time, const result_set& rows) {
  if (const auto number = rows.number(value_column)) return measurement{time, *number};
  const std::string text = rows.text(value_column);
  std::string_view limit = trimmed(text);
  const bool is_below = limit.starts_with('<');
  if (is_below) limit = trimmed(limit.substr(1));
  auto number = plain_number(limit);
  if (!number) number = read_number(limit, true);
  if (!number || !std::isfinite(*number)) return {};
  return measurement{time, *number, is_below};
}

// Merges values at the same time: their mean, or below a limit if one of them is.
std::vector<measurement> averaged(const std::vector<measurement>& values) {
  std::vector<measurement> result;
  for (std::size_t begin = 0, end = 0; begin < values.size(); begin = end) {
    measurement all{values[begin].time, 0};
    for (; end < values.size() && values[end].time == all.time; ++end) {
      all.value += values[end].value;
      all.below_limit |= values[end].below_limit;
    }
    all.value /= static_cast<double>(end - begin);
    result.push_back(all);
  }
  return result;
}

} // namespace

measured_values read_measured_values(const measured_series& series, const std::filesystem::path& folder) {
  import_query query(series.query, folder);
  query.stored.restrict_to_run_period = false;
  measured_values result;
  query.read_rows(prevesk_dataset_data_type(), [&](result_set& rows, bool) {
    while (rows.next()) {
      const double time = rows.is_missing(moment_column) ? 0 : rows.date_and_time(moment_column);
      const bool has_date = std::floor(time) != 0; // day 0: a time without a date
      const auto read = has_date && !rows.is_missing(value_column) ? measurement_of(time, rows) : std::nullopt;
      if (read)
        result.values.push_back(*read);
      else
        ++result.without_value;
    }
    return true;
  });
  std::ranges::stable_sort(result.values, {}, &measurement::time);
  if (series.query.average_duplicates) result.values = averaged(result.values);
  return result;
}

} // namespace vesk
