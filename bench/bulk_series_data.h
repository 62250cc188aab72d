// Random series for the update benchmarks.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <string>

namespace vesk::bench {

struct series_plan {
  std::string name;
  std::size_t count;    // number of series: half loads, half boundary conditions
  std::size_t shortest; // points; lengths are spread evenly over the orders of magnitude between the two
  std::size_t longest;
  double step; // days between updates
  int updates; // of one run
};

inline constexpr double series_days = 366; // covered by every series
inline constexpr double first_update = 100;
inline constexpr std::size_t system_count = 10;

// Three series in four are linear, the others are step functions; their points are equally spaced, each series from a
// random start. The same plan always gives the same data.
prevesk_dataset_data_type make_series(const series_plan& plan);

} // namespace vesk::bench
