// The parts of a data file that are not in the data set read from it.
#pragma once

#include "dataset/records.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

// The lists that a data set takes from the catalogue.
struct model_lists {
  shared_list<system_data_type> systems;
  shared_list<parameter_data_type> parameters;
  shared_list<constant_group_data_type> constant_groups;
  shared_list<time_function_data_type> time_functions;
  shared_list<output_control_type> output_controls;
};

// Numbers of records in such lists.
struct model_record_counts {
  std::size_t systems = 0;
  std::size_t loads = 0;      // of all systems
  std::size_t boundaries = 0; // of all systems
  std::size_t parameters = 0;
  std::size_t constants = 0; // of all groups
  std::size_t time_functions = 0;
  std::size_t output_controls = 0;

  friend bool operator==(const model_record_counts&, const model_record_counts&) = default;
};

model_record_counts count_records(const model_lists& lists);

// "4 systems, 12 loads, 1 boundary": kinds with no records are left out; empty if there are none at all.
std::string in_words(const model_record_counts& counts);

struct reading_losses {
  std::uint32_t newer_version = 0;  // of the file, if it is newer than the current one; else 0
  std::uint64_t bytes_not_read = 0; // at the end of such a file
  bool model_is_unknown = false;    // the catalogue lacks the data set's model
  model_record_counts dropped;      // records that are not in the catalogue
  std::vector<std::string> names;   // of the dropped ones, such as: system "Nitrate"; by kind, in file order

  // Notes the records of `stored`, the file's lists, that have no partner in the catalogue's lists.
  void note_dropped(const model_lists& stored, const model_lists& of_catalogue);

  // Whether the file has anything that the data set has not.
  bool any() const { return newer_version != 0 || !names.empty(); }
};

} // namespace vesk
