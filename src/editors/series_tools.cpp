#include "editors/series_tools.h"

#include <algorithm>

namespace vesk {

namespace {

constexpr std::int64_t seconds_in_a_day = 86400;
constexpr std::int64_t most_times = 10'000'000;

std::int64_t seconds_of(const moment_type& moment) {
  return std::int64_t{moment.date} * seconds_in_a_day + moment.time;
}

moment_type moment_at(std::int64_t seconds) {
  return {static_cast<std::int32_t>(seconds / seconds_in_a_day), static_cast<std::int32_t>(seconds % seconds_in_a_day)};
}

double value_between(const moment_value_pair_type& a, const moment_value_pair_type& b, std::int64_t at) {
  const std::int64_t length = seconds_of(b) - seconds_of(a);
  if (length == 0) return a.value;
  return a.value + (b.value - a.value) * static_cast<double>(at - seconds_of(a)) / static_cast<double>(length);
}

} // namespace

std::string refusal_of(const regular_times& times) {
  if (times.step < 1) return "The step must be at least one second.";
  if (times.end < times.start) return "The end is before the start.";
  const std::int64_t count = (seconds_of(times.end) - seconds_of(times.start)) / times.step + 1;
  if (count > most_times)
    return "This would add " + std::to_string(count) + " points; the limit is 10000000 at a time.";
  return {};
}

void add_regular_times(point_list& points, const regular_times& times) {
  const std::int64_t last = seconds_of(times.end);
  point_list result;
  result.reserve(points.size() + static_cast<std::size_t>((last - seconds_of(times.start)) / times.step + 1));
  std::size_t next = 0; // index of the next existing point
  for (std::int64_t at = seconds_of(times.start); at <= last; at += times.step) {
    while (next < points.size() && seconds_of(points[next]) < at) result.push_back(points[next++]);
    if (next < points.size() && seconds_of(points[next]) == at) continue;
    double value = 0;
    if (next == points.size())
      value = points.empty() ? 0 : points.back().value;
    else
      value = next == 0 ? points.front().value : value_between(points[next - 1], points[next], at);
    result.push_back({moment_at(at), value});
  }
  while (next < points.size()) result.push_back(points[next++]);
  points = std::move(result);
}

void interpolate_between(point_list& points, std::size_t first, std::size_t last) {
  if (last >= points.size() || first + 1 >= last) return;
  const moment_value_pair_type a = points[first], b = points[last];
  moment_value_pair_type* all = points.edit_data();
  for (std::size_t i = first + 1; i < last; ++i) all[i].value = value_between(a, b, seconds_of(all[i]));
}

} // namespace vesk
