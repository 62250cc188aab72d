// A large grid and a large chart on the screen.
#pragma once

#include <benchmark/benchmark.h>

namespace vesk::bench {

// Each registers its benchmarks. They use the one QApplication.
void add_grid_benchmarks();  // a million rows of 30 columns
void add_chart_benchmarks(); // a series of a million points

} // namespace vesk::bench
