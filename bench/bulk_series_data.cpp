#include "bulk_series_data.h"

#include "platform/memory_arena.h"

#include <cmath>
#include <random>

namespace vesk::bench {

namespace {

constexpr std::int32_t first_day = 146097; // 1 January 2000

template <class Record>
Record make_record(const series_plan& plan, memory_arena& arena, std::mt19937_64& random) {
  std::uniform_real_distribution<double> unit(0, 1);
  const auto shortest = static_cast<double>(plan.shortest);
  const double spread = static_cast<double>(plan.longest) / shortest;
  const auto points = static_cast<std::size_t>(std::lround(shortest * std::pow(spread, unit(random))));
  const double distance = series_days * 86400 / static_cast<double>(points);
  const double phase = distance * unit(random);

  Record record;
  record.interpolation_type = unit(random) < 0.75 ? interpolation_linear : interpolation_step;
  record.points = point_list::uninitialized(arena, points);
  moment_value_pair_type* point = record.points.edit_data();
  for (std::size_t i = 0; i < points; ++i) {
    const auto second = std::llround(phase + distance * static_cast<double>(i));
    point[i] = {{first_day + static_cast<std::int32_t>(second / 86400), static_cast<std::int32_t>(second % 86400)},
                unit(random)};
  }
  return record;
}

} // namespace

prevesk_dataset_data_type make_series(const series_plan& plan) {
  prevesk_dataset_data_type data;
  data.seed_date = moment_type(first_day, 0).date_time();
  data.seed_time = 0;
  data.systems.resize(system_count);
  const std::size_t segments = plan.count / (2 * system_count);
  data.resize_segments(segments);

  // All points in one arena, as the data file reader stores them.
  memory_arena* arena = memory_arena::create(plan.count * (plan.longest + 1) * sizeof(moment_value_pair_type));
  std::mt19937_64 random(20240229);
  for (std::size_t s = 0; s < system_count; ++s) {
    system_data_type& system = data.systems.edit(s);
    system.isc = static_cast<std::uint32_t>(s + 1);
    for (std::size_t i = 0; i < segments; ++i) {
      system.loads.push_back(make_record<loads_data_type>(plan, *arena, random));
      system.loads.edit_back().segment = static_cast<std::int32_t>(i);
      system.boundaries.push_back(make_record<boundary_data_type>(plan, *arena, random));
      system.boundaries.edit_back().segment = static_cast<std::int32_t>(i);
    }
  }
  arena->release();
  return data;
}

} // namespace vesk::bench
