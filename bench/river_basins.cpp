#include "river_basins.h"

#include "platform/memory_arena.h"

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

namespace vesk::bench {

namespace {

constexpr double first_day = 40000, year = 365; // of the series
constexpr std::size_t reach_length = 100;       // segments
constexpr std::size_t headwaters = 4, branches = 2;
enum reach : std::size_t {
  first_branch = headwaters,
  lake_surface = 6,
  lake_bottom,
  upper_river,
  lower_river,
  reaches
};
static_assert(reaches * reach_length == segments_of_basin);
enum : std::size_t { ammonium, nitrate, cbod, oxygen, systems };
enum : std::uint32_t { demand_isc = 2, settling_isc = 4, temperature_isc = 1 };

double noise(std::size_t a, std::size_t b) { // 0 to 1, the same in each call
  std::uint64_t x = a * 0x9e3779b97f4a7c15u + b * 0xc2b2ae3d27d4eb4fu + 1;
  x ^= x >> 31;
  x *= 0xbf58476d1ce4e5b9u;
  x ^= x >> 29;
  return static_cast<double>(x >> 11) * 0x1p-53;
}

class generator {
public:
  generator(std::shared_ptr<const model_catalogue> catalogue, std::size_t segments, double days)
      : data_(std::move(catalogue)), basins_(segments / segments_of_basin),
        arena_(memory_arena::create((basins_ * series_of_basin + 1) * (hours_of_year + 1) *
                                    sizeof(moment_value_pair_type))) {
    if (segments % segments_of_basin != 0 || data_.systems.size() != systems)
      throw std::invalid_argument("river basins take whole basins and the model of dissolved oxygen");
    for (std::size_t hour = 0; hour < hours_of_year; ++hour) {
      const double turn = 2 * std::numbers::pi * static_cast<double>(hour);
      wave_.push_back(std::sin(turn / hours_of_year) + 0.3 * std::sin(turn / 24));
    }
    set_times(days);
  }
  ~generator() { arena_->release(); }
  generator(const generator&) = delete;
  generator& operator=(const generator&) = delete;

  prevesk_dataset_data_type make() {
    data_.resize_segments(basins_ * segments_of_basin);
    data_.flow_fields.edit(0).used = data_.exchange_fields.edit(0).used = true;
    for (const std::uint32_t isc : {demand_isc, settling_isc}) data_.parameters.edit(isc - 1).used = true;
    time_function_data_type& temperature = data_.time_functions.edit(0);
    temperature.used = true;
    temperature.points = hourly(18, 8, 0);
    data_.systems.edit(oxygen).jmass = true;
    for (std::size_t basin = 0; basin < basins_; ++basin) {
      make_segments(basin);
      make_flows(basin);
      make_exchanges(basin);
      make_loads(basin);
      make_boundaries(basin);
    }
    data_.find_boundaries(); // the remaining ones: headwaters and sea of each system
    for (std::size_t system = 0; system < systems; ++system)
      for (std::size_t i = 0; i < data_.systems[system].boundaries.size(); ++i)
        if (data_.systems[system].boundaries[i].points.size() == 2)
          data_.systems.edit(system).boundaries.edit(i).points = constant(background(system));
    return data_;
  }

private:
  static double background(std::size_t system) { return system == oxygen ? 9.0 : 0.5; }

  static std::int32_t segment(std::size_t basin, std::size_t in_reach, std::size_t at) {
    return static_cast<std::int32_t>(basin * segments_of_basin + in_reach * reach_length + at);
  }

  void set_times(double days) {
    data_.seed_date = first_day + 180;
    data_.seed_time = data_.end_time = 0;
    data_.end_date = data_.seed_date + days;
    data_.print_intervals.points = {{moment_type::from_date_time(data_.seed_date), 0.25}};
    data_.description = "River basins";
  }

  // A point per hour, around `middle` and never below 0.
  point_list hourly(double middle, double spread, std::size_t number) {
    point_list points = point_list::uninitialized(*arena_, hours_of_year);
    moment_value_pair_type* point = points.edit_data();
    const double own = 0.5 + noise(number, 0);
    for (std::size_t hour = 0; hour < hours_of_year; ++hour) {
      const auto day = static_cast<std::int32_t>(hour / 24);
      const double value = middle + spread * (own * 0.6 * wave_[hour] + 0.1 * noise(number, hour));
      point[hour] = {{first_moment_.date + day, static_cast<std::int32_t>(hour % 24 * 3600)}, std::max(value, 0.0)};
    }
    return points;
  }
  static point_list constant(double value) {
    return {{moment_type::from_date_time(first_day), value}, {moment_type::from_date_time(first_day + year), value}};
  }

  void make_segments(std::size_t basin) {
    for (std::size_t r = 0; r < reaches; ++r) {
      const bool in_lake = r == lake_surface || r == lake_bottom;
      for (std::size_t at = 0; at < reach_length; ++at) {
        segment_data_type& it = data_.segments.edit(static_cast<std::size_t>(segment(basin, r, at)));
        it.name = "Basin " + std::to_string(basin + 1) + " reach " + std::to_string(r + 1) + " km " +
                  std::to_string(static_cast<double>(at) / 5).substr(0, 4);
        it.length = 200;
        it.width = r < headwaters ? 40 : in_lake ? 800 : 120;
        const double depth = in_lake ? 6 : 3;
        it.volume = it.length * it.width * depth;
        it.minimum_depth = 0.1;
        it.segment_type = r == lake_bottom ? 2 : 1;
        if (r == lake_surface) it.bottom_segment = segment(basin, lake_bottom, at);
        for (std::size_t s = 0; s < systems; ++s)
          it.systems.set(s, {data_.systems[s].isc, background(s), s == cbod ? 0.6 : 1.0});
        it.parameters.set(demand_isc - 1, {demand_isc, 0.5 + noise(basin, at)});
        it.parameters.set(settling_isc - 1, {settling_isc, 0.2});
      }
    }
  }

  // Each headwater's water flows all the way to the sea.
  void make_flows(std::size_t basin) {
    auto& functions = data_.flow_fields.edit(0).functions;
    for (std::size_t headwater = 0; headwater < headwaters; ++headwater) {
      flow_function_data_type flow;
      flow.description = "Headwater " + std::to_string(basin * headwaters + headwater + 1);
      flow.points = hourly(8, 6, next_series_++);
      std::int32_t last = no_segment;
      for (const std::size_t r : {headwater, first_branch + headwater / branches, std::size_t{lake_surface},
                                  std::size_t{upper_river}, std::size_t{lower_river}})
        for (std::size_t at = 0; at < reach_length; ++at) {
          flow.pairs.push_back({1.0, last, segment(basin, r, at)});
          last = segment(basin, r, at);
        }
      flow.pairs.push_back({1.0, last, no_segment});
      functions.push_back(std::move(flow));
    }
  }

  void make_exchanges(std::size_t basin) {
    exchange_function_data_type dispersion, mixing;
    dispersion.description = "Dispersion " + std::to_string(basin + 1);
    dispersion.points = constant(2);
    mixing.description = "Mixing of lake " + std::to_string(basin + 1);
    mixing.points = hourly(1e-4, 1e-4, next_series_++);
    for (std::size_t r = 0; r < reaches; ++r)
      for (std::size_t at = 1; at < reach_length; ++at) {
        const segment_data_type& it = data_.segments[static_cast<std::size_t>(segment(basin, r, at))];
        dispersion.pairs.push_back(
            {it.volume / it.length, it.length, segment(basin, r, at - 1), segment(basin, r, at)});
      }
    for (std::size_t at = 0; at < reach_length; ++at) {
      const segment_data_type& it = data_.segments[static_cast<std::size_t>(segment(basin, lake_surface, at))];
      mixing.pairs.push_back(
          {it.length * it.width, 6, segment(basin, lake_surface, at), segment(basin, lake_bottom, at)});
    }
    dispersion.pairs.push_back({360, 200, segment(basin, lower_river, reach_length - 1), no_segment}); // the tide
    auto& functions = data_.exchange_fields.edit(0).functions;
    functions.push_back(std::move(dispersion));
    functions.push_back(std::move(mixing));
  }

  // Three towns with hourly loads, and a small constant load at each headwater.
  void make_loads(std::size_t basin) {
    const auto add = [&](std::size_t system, std::size_t r, std::size_t at, point_list points) {
      loads_data_type load;
      load.segment = segment(basin, r, at);
      load.points = std::move(points);
      data_.systems.edit(system).loads.push_back(std::move(load));
    };
    add(ammonium, first_branch, 50, hourly(200, 100, next_series_++));
    add(cbod, first_branch, 50, hourly(900, 500, next_series_++));
    add(nitrate, upper_river, 10, hourly(150, 80, next_series_++));
    for (std::size_t headwater = 0; headwater < headwaters; ++headwater) add(nitrate, headwater, 30, constant(20));
  }

  void make_boundaries(std::size_t basin) {
    for (const std::size_t system : {ammonium, cbod}) {
      boundary_data_type boundary;
      boundary.segment = segment(basin, 0, 0);
      boundary.points = hourly(0.8, 0.4, next_series_++);
      data_.systems.edit(system).boundaries.push_back(std::move(boundary));
    }
  }

  prevesk_dataset_data_type data_;
  const std::size_t basins_;
  memory_arena* arena_; // of the hourly series, as in the data file reader
  const moment_type first_moment_ = moment_type::from_date_time(first_day);
  std::vector<double> wave_; // over the year and over each day
  std::size_t next_series_ = 1;
};

} // namespace

prevesk_dataset_data_type make_river_basins(std::shared_ptr<const model_catalogue> catalogue, std::size_t segments,
                                            double days) {
  return generator(std::move(catalogue), segments, days).make();
}

} // namespace vesk::bench
