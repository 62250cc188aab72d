// Copying a load or a boundary to other systems and segments.
#pragma once

#include "dataset/series.h"

#include <cstddef>
#include <vector>

namespace vesk {

struct copy_targets {
  std::vector<std::size_t> systems;  // positions, as those of the segments
  std::vector<std::size_t> segments; // all within the network
  bool with_query = true;            // also the interpolation and the stored query
};

struct copy_counts {
  std::size_t added = 0, replaced = 0;
};

// What `copy_series` would do.
copy_counts count_copies(const prevesk_dataset_data_type& data, const series_ref& source, const copy_targets& targets);

// Gives the records of each of these segments in each of these systems the points of `source`, which must name a load
// or a boundary. A load that is missing is appended; a boundary is not, as the pairs of the network decide which there
// are. Of several records of one segment only the first takes part, and the source itself never.
copy_counts copy_series(prevesk_dataset_data_type& data, const series_ref& source, const copy_targets& targets);

} // namespace vesk
