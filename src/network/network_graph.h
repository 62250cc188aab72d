// The network of a data set: its segments and their connections, without the time series.
//
// Segments are positions from 0. A value type, usable on any thread.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

using segment_number = std::uint32_t; // a position, from 0

// All flow pairs between the same two segments.
struct network_flow {
  segment_number from = 0, to = 0; // in the direction of the mean flow; as entered if that is 0
  double mean = 0;                 // m3/s over the run, at least 0; flows of unused fields are ignored
  bool is_water = true;            // otherwise solids: true for the first two fields

  friend bool operator==(const network_flow&, const network_flow&) = default;
};

// All exchange pairs between the same two segments.
struct network_exchange {
  segment_number one = 0, two = 0; // one < two

  friend bool operator==(const network_exchange&, const network_exchange&) = default;
};

// A segment's connections to the outside of the model.
struct network_segment {
  std::string name;
  double length = 0;                        // m; not-a-number if the data set has none
  std::int32_t bottom = no_segment;         // the segment beneath
  double inflow = 0, outflow = 0;           // of water from and to the outside, m3/s, means over the run
  bool flows_in = false, flows_out = false; // such a flow exists, even if its mean is 0
  bool exchanges_outside = false;
  std::uint32_t loads = 0, boundaries = 0; // records of all systems

  friend bool operator==(const network_segment&, const network_segment&) = default;
};

struct network_graph {
  std::vector<network_segment> segments;
  std::vector<network_flow> flows; // sorted by segments; at most one per two segments for water and one for solids
  std::vector<network_exchange> exchanges; // sorted by segments; at most one per two segments
  std::size_t bad_pairs = 0; // left out: the segment does not exist, is named twice, or both ends are outside

  // True if a picture of one fits the other: same segments and connections, regardless of names and amounts.
  bool has_shape_of(const network_graph& other) const;

  friend bool operator==(const network_graph&, const network_graph&) = default;
};

network_graph make_network(const prevesk_dataset_data_type& data);

// The mean of a series over a period, interpolated as in a run: constant before the first and after the last point.
// Date-time numbers. 0 for a series without points; values that are not finite count as 0.
double mean_over(const point_list& points, bool steps, double start, double end);

// "5: Halifax".
std::string segment_label(const network_graph& network, std::size_t segment);

} // namespace vesk
