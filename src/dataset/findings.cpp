#include "dataset/findings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace vesk {

namespace {

std::string number_text(double value) {
  std::array<char, 32> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

} // namespace

bool is_used(const prevesk_dataset_data_type& data, const series_ref& ref) {
  switch (ref.kind) {
  case series_kind::time_function: return data.time_functions[ref.index].used;
  case series_kind::exchange_function: return data.exchange_fields[ref.owner].used;
  case series_kind::flow_function: return data.flow_fields[ref.owner].used;
  case series_kind::load:
  case series_kind::boundary: return data.systems[ref.owner].gsysbypass != system_bypassed;
  default: return true;
  }
}

point_finding check_point(const stored_series& series, const series_ref& ref, std::size_t row) {
  using part = point_finding::part;
  const point_list& points = series.points;
  if (row >= points.size()) return {};
  const moment_value_pair_type& point = points[row];
  if (row > 0 && point < points[row - 1]) return {part::moment, "This date and time is before that of the row above."};
  const moment_type& moment = point;
  const bool repeats = (row > 0 && moment == static_cast<const moment_type&>(points[row - 1])) ||
                       (row + 1 < points.size() && moment == static_cast<const moment_type&>(points[row + 1]));
  if (repeats) return {part::moment, "Another row has the same date and time."};
  if (!std::isfinite(point.value)) return {part::value, not_finite_finding};
  const bool interval = ref.kind == series_kind::print_intervals || ref.kind == series_kind::time_steps;
  if (interval && !(point.value > 0)) return {part::value, "The bundled engine refuses an interval of 0 or less."};
  return {};
}

std::string missing_segment_finding(std::int32_t segment) {
  return "Segment " + std::to_string(std::int64_t{segment} + 1) + " does not exist.";
}

std::string pair_end_finding(std::int32_t end, std::int32_t other, std::size_t segments) {
  if (end >= 0 && static_cast<std::size_t>(end) >= segments) return missing_segment_finding(end);
  if (end < no_segment)
    return "The stored number is " + std::to_string(end) +
           ", which makes no boundary. Choose a segment here, and then \"Boundary\".";
  if (end == other)
    return end == no_segment ? "Both sides are outside the network, so this pair makes no boundary."
                             : "Both sides are the same segment.";
  return {};
}

std::string range_finding(double value, double minimum, double maximum) {
  if (!(minimum < maximum) || (value >= minimum && value <= maximum)) return {};
  return "The value is outside the catalogue's range, from " + number_text(minimum) + " to " + number_text(maximum) +
         ".";
}

std::size_t points_outside_run(const prevesk_dataset_data_type& data, const point_list& points) {
  const moment_type start = moment_type::from_date_time(data.start_date_time());
  const moment_type end = moment_type::from_date_time(data.end_date_time());
  return static_cast<std::size_t>(
      std::ranges::count_if(points, [&](const moment_type& point) { return point < start || end < point; }));
}

std::string series_finding(const prevesk_dataset_data_type& data, const series_ref& ref) {
  const stored_series* series = find_series(data, ref);
  return series && is_used(data, ref) ? used_series_finding(data, *series) : std::string();
}

std::string used_series_finding(const prevesk_dataset_data_type& data, const stored_series& series) {
  if (series.points.empty()) return series.query->deferred ? "" : "This series is used, but it has no points.";
  const moment_type start = moment_type::from_date_time(data.start_date_time());
  const moment_type end = moment_type::from_date_time(data.end_date_time());
  if (end < static_cast<const moment_type&>(series.points.front()))
    return "This series is used, but it begins after the end of the run.";
  if (static_cast<const moment_type&>(series.points.back()) < start)
    return "This series is used, but it ends before the start of the run.";
  return {};
}

} // namespace vesk
