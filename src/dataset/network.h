// Changes to a data set's network: segments are inserted and erased, and references to them are adjusted.
//
// After every change each segment has as many parameter and system records as the model; `verify` checks that.
// A catalogue that lacks the model, or has other parameters or systems for it, takes nothing away. Positions count from
// 0.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <string>

namespace vesk {

// Numbers of records that refer to segments.
struct segment_references {
  std::size_t pairs = 0, bottoms = 0, loads = 0, boundaries = 0;

  std::size_t total() const { return pairs + bottoms + loads + boundaries; }
  friend bool operator==(const segment_references&, const segment_references&) = default;
};

// "14 pairs, 4 bottom references, 3 loads and 5 boundaries"; empty if there are none.
std::string in_words(const segment_references& counts);

// Inserts a default segment before `position`, which is at most the number of segments. References keep their numbers,
// so those at or after `position` refer to another segment afterwards.
void insert_segment(prevesk_dataset_data_type& data, std::size_t position);

// Erases a segment, if there is one at `position`. References keep their numbers, except bottom references past the new
// end, which are set to the last segment.
void erase_segment(prevesk_dataset_data_type& data, std::size_t position);

// Gives every segment one record for each parameter and system of the data set, keeping existing values. The segments
// that are not in `which` are known to have their records. See `reconcile_segments`.
void reconcile_segment_records(prevesk_dataset_data_type& data, segment_range which = {});

// Sets bottom references past the end to the last segment. Returns how many.
std::size_t pull_bottom_references(prevesk_dataset_data_type& data);

// Counts the records that refer to a segment at or after `position`. A pair counts once.
segment_references references_from(const prevesk_dataset_data_type& data, std::size_t position);

// The records that name a segment from `first` on and before `end`.
segment_references references_between(const prevesk_dataset_data_type& data, std::size_t first, std::size_t end);

// The pairs, loads and boundaries that name a segment from `first` on, after the segments there were appended. Bottom
// references are not counted: they never name a segment that does not exist.
segment_references references_to_appended(const prevesk_dataset_data_type& data, std::size_t first);

// Like `insert_segment`, but all references still refer to the same segments. Returns how many were changed.
segment_references insert_and_renumber(prevesk_dataset_data_type& data, std::size_t position);

// Erases `count` segments from `first` on, as far as they exist, with their pairs, loads and boundaries, and sets
// bottom references to them to none. All other references still refer to the same segments. Returns how many were
// removed or set to none.
segment_references erase_and_renumber(prevesk_dataset_data_type& data, std::size_t first, std::size_t count = 1);

// The first fault in the network's records, as a sentence; empty if there is none.
std::string verify(const prevesk_dataset_data_type& data);

} // namespace vesk
