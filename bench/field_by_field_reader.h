// The peer of the data file reader: reads each field separately from a std::ifstream, with lists as deques and points
// as separate objects.
#pragma once

#include "dataset/dataset.h"

#include <deque>
#include <filesystem>

namespace vesk::bench {

struct object_point {
  virtual ~object_point() = default;
  std::int32_t date = 0;
  std::int32_t time = 0;
  double value = 0;
};

struct deques_of_file {
  prevesk_dataset_data_type rest;                                        // all records, without those below
  std::deque<std::deque<object_point>> series;                           // of each record with points, in file order
  std::deque<std::deque<segment_parameter_data_record_type>> parameters; // of each segment
  std::deque<std::deque<segment_system_data_record_type>> systems;       // of each segment
};

deques_of_file read_field_by_field(const std::filesystem::path& file);

} // namespace vesk::bench
