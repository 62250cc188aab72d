#include "shell/bulk/bulk_reference.h"

#include "shell/bulk/bulk_series.h"

namespace vesk {

namespace {

double interpolate(bool step, double t, double previous_time, double previous_value, double next_time,
                   double next_value) {
  if (step) return previous_value;
  return (next_value - previous_value) * ((t - previous_time) / (next_time - previous_time)) + previous_value;
}

// Searches for the bracket from the first point on. The cursors are set only if there is one, so a series entirely
// before `t` is scanned again at each step.
double scan(const point_list& points, bool step, series_cursors& cursors, double t) {
  double previous_time = 0;
  double previous_value = 0;
  std::uint32_t count = 0;
  for (const moment_value_pair_type& point : points) {
    const double time = point.date_time();
    if (count == 0 && !(t >= time)) return point.value;
    if (count >= 1 && t >= previous_time && !(t >= time)) {
      cursors.cursor_next = point;
      cursors.cursor_previous = points[count - 1];
      cursors.cursor_index = count;
      return interpolate(step, t, previous_time, previous_value, time, point.value);
    }
    previous_time = time;
    previous_value = point.value;
    ++count;
  }
  return previous_value;
}

double go_forward(const point_list& points, bool step, series_cursors& cursors, double t) {
  double value = cursor_unset;
  while (t >= cursors.cursor_next.date_time()) {
    if (points.size() <= std::size_t{cursors.cursor_index} + 1) {
      value = cursors.cursor_next.value;
      break;
    }
    cursors.cursor_previous = points[cursors.cursor_index];
    cursors.cursor_next = points[++cursors.cursor_index];
  }
  if (value != cursor_unset) return value;
  return interpolate(step, t, cursors.cursor_previous.date_time(), cursors.cursor_previous.value,
                     cursors.cursor_next.date_time(), cursors.cursor_next.value);
}

} // namespace

double evaluate_series(const point_list& points, bool step, series_cursors& cursors, double t) {
  if (cursors.cursor_next.value == cursor_unset) return scan(points, step, cursors, t);
  return go_forward(points, step, cursors, t);
}

void update_stage(prevesk_dataset_data_type& data, bulk_stage stage, double t, float* array,
                  const std::function<void(const series_ref&)>& left_out) {
  visit_series(
      data, stage,
      [&](const bulk_element& element) {
        double value = 0;
        if (element.used) {
          series_cursors& cursors = edit_cursors(data, element.series);
          value = evaluate_series(find_series(data, element.series)->points, element.step, cursors, t);
        }
        array[element.index] = static_cast<float>(value);
      },
      left_out);
}

} // namespace vesk
