// The ways from one segment of a network to another.
#pragma once

#include "network/network_graph.h"

#include <span>
#include <vector>

namespace vesk {

// Consecutive segments, without repetition.
struct river_way {
  std::vector<segment_number> segments;
  double length = 0; // m, sum over all segments; not-a-number if one has no length
  double flow = 0;   // smallest mean flow between two neighbours, m3/s; 0 for a single segment

  friend bool operator==(const river_way&, const river_way&) = default;
};

struct found_ways {
  enum class course {
    downstream, // along the flows of water
    upstream,   // against them, because no way follows them
    across,     // along connections of any kind, in any direction, because no way leads along or against flows
  };
  std::vector<river_way> ways; // greatest flow first
  course follows = course::downstream;
  bool are_all = true; // false: there may be more; these are the shortest, and the one with the greatest flow
};

// The ways through the given segments (at least one) in their order, at most `most` (at least 1). Empty if there are
// none. In a network with many loops the search ends after a fixed amount of work; `are_all` is then false. Shortest is
// by metres if all segments of the network have a length, otherwise by number of segments.
found_ways find_ways(const network_graph& network, std::span<const segment_number> through, std::size_t most = 20);

// The position of each segment's middle, from the start of the first: in metres, or counted in segments from 1 if a
// segment has no length. `lengths` in metres by segment, not-a-number if unknown.
struct way_axis {
  std::vector<double> at;
  bool is_in_metres = true;
};
way_axis axis_along(const river_way& way, const std::vector<double>& lengths);
std::vector<double> lengths_of(const network_graph& network);

} // namespace vesk
