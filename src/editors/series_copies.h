// Copies a load or a boundary to other systems and segments.
#pragma once

#include "dataset/series.h"

#include <cstddef>
#include <vector>

namespace vesk {

struct copy_targets {
  std::vector<std::size_t> systems;  // positions, like the segments
  std::vector<std::size_t> segments; // all within the network
  bool with_query = true;            // also the interpolation and the stored query
};

struct copy_counts {
  std::size_t added = 0, replaced = 0;
};

// The effect of `copy_series`.
copy_counts count_copies(const prevesk_dataset_data_type& data, const series_ref& source, const copy_targets& targets);

// Copies the points of `source`, a load or a boundary, to the records of these segments in these systems. Missing loads
// are appended; missing boundaries are not, since the network's pairs determine them. If a segment has several records
// only the first is changed; the source itself never is.
copy_counts copy_series(prevesk_dataset_data_type& data, const series_ref& source, const copy_targets& targets);

} // namespace vesk
