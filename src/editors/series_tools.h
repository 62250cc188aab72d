// Operations on the points of a series that are tedious by hand.
#pragma once

#include "dataset/moment.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vesk {

// Regular dates and times from `start` to `end`, both included if the steps meet them.
struct regular_times {
  moment_type start{0, 0}, end{0, 0};
  std::int64_t step = 0; // seconds
};

// Why these times cannot be used, in one sentence; empty: they can.
std::string refusal_of(const regular_times& times);

// Adds a point at each of the times that has none yet. Its value is interpolated between the points before and after
// it; before the first and after the last it is that point's value, and 0 in an empty series. `points` and the result
// are in order.
void add_regular_times(point_list& points, const regular_times& times);

// Gives the points between `first` and `last` the values on the straight line between those two, by date and time.
void interpolate_between(point_list& points, std::size_t first, std::size_t last);

} // namespace vesk
