// Operations on the points of a series that are tedious by hand.
#pragma once

#include "dataset/moment.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vesk {

// Regular dates and times from `start` to `end`, including `end` if a step falls on it.
struct regular_times {
  moment_type start{0, 0}, end{0, 0};
  std::int64_t step = 0; // seconds
};

// Why these times cannot be used, in one sentence; empty: usable.
std::string refusal_of(const regular_times& times);

// Adds a point at each time that has none. Its value is interpolated between its neighbours; before the first and after
// the last point it is that point's value, and 0 in an empty series. `points` and the result are sorted.
void add_regular_times(point_list& points, const regular_times& times);

// Sets the points between `first` and `last` to the straight line between those two, by date and time.
void interpolate_between(point_list& points, std::size_t first, std::size_t last);

} // namespace vesk
