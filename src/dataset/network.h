// Changes of a data set's network: segments come and go, and what refers to them by position.
//
// Every change leaves as many parameter and system records in each segment as the model has; `verify` checks that.
// Positions count from 0. Throws catalogue_exception when the data set's catalogue lacks what it needs.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <string>

namespace vesk {

// How many records name segments.
struct segment_references {
  std::size_t pairs = 0, bottoms = 0, loads = 0, boundaries = 0;

  std::size_t total() const { return pairs + bottoms + loads + boundaries; }
  friend bool operator==(const segment_references&, const segment_references&) = default;
};

// "14 pairs, 4 bottom references, 3 loads and 5 boundaries"; empty when there are none.
std::string in_words(const segment_references& counts);

// Puts a default segment before `position`, at most the number of segments. References keep their numbers, so those at
// or after `position` name another segment from then on.
void insert_segment(prevesk_dataset_data_type& data, std::size_t position);

// Erases `count` segments from `position` on. References keep their numbers, but for bottom references past the new
// end, which are pulled to the last segment.
void erase_segments(prevesk_dataset_data_type& data, std::size_t position, std::size_t count);

// Gives every segment one record for each parameter and system of the data set, with the values it has already. The
// catalogue's descriptions return.
void reconcile_segment_records(prevesk_dataset_data_type& data);

// Pulls bottom references past the end to the last segment. Returns how many.
std::size_t pull_bottom_references(prevesk_dataset_data_type& data);

// The records that name a segment at or after `position`. A pair counts once.
segment_references references_from(const prevesk_dataset_data_type& data, std::size_t position);

// As `insert_segment`, but all references go on naming the segments that they named. Returns how many were moved.
segment_references insert_and_renumber(prevesk_dataset_data_type& data, std::size_t position);

// Erases one segment with its pairs, loads and boundaries, and sets bottom references to it to none. The other
// references go on naming the segments that they named. Returns what was removed or set to none.
segment_references erase_and_renumber(prevesk_dataset_data_type& data, std::size_t position);

// The first thing wrong with the network's records, as a sentence; empty: nothing.
std::string verify(const prevesk_dataset_data_type& data);

} // namespace vesk
