// The network of a data set: its segments and what connects them, without the tables over time.
//
// Segments are positions from 0. A value; any thread.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

using segment_number = std::uint32_t; // a position, from 0

// All pairs of flows between the same two segments.
struct network_flow {
  segment_number from = 0, to = 0; // in the direction of the mean flow; as entered where that is 0
  double mean = 0;                 // m3/s over the run, at least 0; flows of fields that are not used count nothing
  bool is_water = true;            // else it carries solids: of the fields after the first two

  friend bool operator==(const network_flow&, const network_flow&) = default;
};

// All pairs of exchanges between the same two segments.
struct network_exchange {
  segment_number one = 0, two = 0; // one < two

  friend bool operator==(const network_exchange&, const network_exchange&) = default;
};

// What a segment has to do with the outside of the model.
struct network_segment {
  std::string name;
  double length = 0;                        // m; not-a-number where the data set has none
  std::int32_t bottom = no_segment;         // the segment beneath
  double inflow = 0, outflow = 0;           // of water from and to the outside, m3/s, means over the run
  bool flows_in = false, flows_out = false; // there is such a flow, whatever its mean
  bool exchanges_outside = false;
  std::uint32_t loads = 0, boundaries = 0; // records of all systems

  friend bool operator==(const network_segment&, const network_segment&) = default;
};

struct network_graph {
  std::vector<network_segment> segments;
  std::vector<network_flow> flows;         // ordered by segments, each two at most once for water and once for solids
  std::vector<network_exchange> exchanges; // ordered by segments, each two at most once
  std::size_t bad_pairs = 0; // left out: they name a segment that there is not, the same one twice, or only the outside

  // True if a picture of the one fits the other: the same segments and connections, whatever names and amounts.
  bool has_shape_of(const network_graph& other) const;

  friend bool operator==(const network_graph&, const network_graph&) = default;
};

network_graph make_network(const prevesk_dataset_data_type& data);

// The mean of a series over a period, as a run interpolates it: before the first point its value, after the last that.
// Date-time numbers. 0 for a series without points; values that are not finite count as 0.
double mean_over(const point_list& points, bool steps, double start, double end);

// "5: Halifax".
std::string segment_label(const network_graph& network, std::size_t segment);

} // namespace vesk
