// The ways from one segment of a network to another.
#pragma once

#include "network/network_graph.h"

#include <span>
#include <vector>

namespace vesk {

// Segments one after the other, none twice.
struct river_way {
  std::vector<segment_number> segments;
  double length = 0; // m, of all its segments; not-a-number if one has none
  double flow = 0;   // the least mean flow between two neighbours, m3/s; 0 for a single segment

  friend bool operator==(const river_way&, const river_way&) = default;
};

struct found_ways {
  enum class course {
    downstream, // along the flows of water
    upstream,   // against them, because no way leads along them
    across,     // along connections of any kind, in any direction, because no way leads along flows or against them
  };
  std::vector<river_way> ways; // that with the greatest flow first
  course follows = course::downstream;
  bool are_all = true; // false: there may be more; these are the shortest, and the one with the greatest flow
};

// The ways through the given segments in their order, at least one, at most `most` of them, which is at least 1. Empty
// if there is none. In a network with many loops the search ends after a fixed amount of work; `are_all` is then false.
// Shortest is by metres if all segments of the network have a length, otherwise by the number of segments.
found_ways find_ways(const network_graph& network, std::span<const segment_number> through, std::size_t most = 20);

// Where the middle of each segment of the way is, from the beginning of the first: in metres, or counted in segments
// from 1 if one has no length. `lengths` in metres by segment, not-a-number where unknown.
struct way_axis {
  std::vector<double> at;
  bool is_in_metres = true;
};
way_axis axis_along(const river_way& way, const std::vector<double>& lengths);
std::vector<double> lengths_of(const network_graph& network);

} // namespace vesk
