// Whether results belong to a data set: the record beside them is compared with it.
#pragma once

#include "dataset/dataset.h"

#include <filesystem>
#include <string>

namespace vesk {

struct results_state {
  enum class origin {
    none,          // no results yet
    unknown,       // without a record, or with that of other results
    this_data_set, // nothing has changed since
    changed,
  };

  std::filesystem::path file; // NAME.nc
  origin from = origin::none;
  std::string written; // when, as "22 Nov 2026 04:30", local time
  std::string filled;  // when queries filled series for that run, likewise; empty: none did, or it is not known
  std::string changes; // "3 loads, 1 constant and the table gauges.csv"
};

// Reads the record of NAME.nc and hashes the data set, which takes about a second for each 200 MB of points. `base`: of
// the results' names; empty: none. Any thread. Does not throw.
results_state state_of_results(const prevesk_dataset_data_type& data, const std::filesystem::path& base);

// "from this data set", "changed since: 3 loads and 1 constant"; empty without results.
std::string origin_in_words(const results_state& state);

} // namespace vesk
