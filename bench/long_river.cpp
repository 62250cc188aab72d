#include "long_river.h"

namespace vesk::bench {

prevesk_dataset_data_type make_long_river(std::shared_ptr<const model_catalogue> catalogue, std::size_t segments,
                                          double step_days, double days) {
  prevesk_dataset_data_type river(std::move(catalogue));
  river.seed_date = 40000;
  river.seed_time = river.end_time = 0;
  river.end_date = river.seed_date + days;
  const moment_type start = moment_type::from_date_time(river.seed_date),
                    end = moment_type::from_date_time(river.end_date);
  river.time_steps.points = {{start, step_days}};
  river.print_intervals.points = {{start, days}};
  river.resize_segments(segments);
  for (std::size_t i = 0; i < segments; ++i) {
    segment_data_type& segment = river.segments.edit(i);
    segment.volume = 10'000;
    segment.length = 200;
    segment.width = 25;
    segment.minimum_depth = 0.5;
  }
  flow_function_data_type flow;
  flow.points = {{start, 5.0}, {end, 5.0}};
  const auto last = static_cast<std::int32_t>(segments);
  for (std::int32_t i = 0; i <= last; ++i) flow.pairs.push_back({1.0, i == 0 ? -1 : i - 1, i == last ? -1 : i});
  auto& field = river.flow_fields.edit(0);
  field.used = true;
  field.functions.push_back(flow);
  return river;
}

} // namespace vesk::bench
