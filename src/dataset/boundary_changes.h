// What a search for boundaries has added and removed, for the line that the user sees.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vesk {

// A segment counts once, in however many systems it has got or lost a boundary.
struct boundary_changes {
  struct segments_and_systems {
    std::vector<std::size_t> segments; // their positions, from 0, ascending
    std::size_t systems = 0;           // in which they have changed
  };
  segments_and_systems added, removed;
  std::size_t points = 0;  // that the removed boundaries had, in all systems together
  std::size_t systems = 0; // in which something has changed
};

// `after` is `before` after a new search for its boundaries.
boundary_changes changes_of_boundaries(const prevesk_dataset_data_type& before, const prevesk_dataset_data_type& after);

// "1 boundary added: segment 1 (Weldon), 1 system; 1 removed with its 365 points: segment 5 (Halifax), 4 systems". One
// part if both are about the same segments: "1 boundary added, 1 removed with its 365 points: segment 5 (Halifax), 4
// systems". Empty: nothing has changed.
std::string in_words(const boundary_changes& changes, const prevesk_dataset_data_type& data);

} // namespace vesk
