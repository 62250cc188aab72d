// Hashes of a data set's records, for comparing it with a later one record by record.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vesk {

// One list of records, or one member that is not a list. Named as in `vki dump`; a list within records is prefixed by
// the outer list's name: "segments", "systems.loads", "end_date", "time_steps.points".
struct list_hashes {
  std::string name;
  std::size_t records = 0;         // in all lists with this name
  std::vector<std::string> hashes; // one per record in file order, without nested lists; or a single one for all
  bool one_for_all() const { return hashes.size() == 1 && records != 1; }

  friend bool operator==(const list_hashes&, const list_hashes&) = default;
};

struct data_set_hashes {
  static constexpr std::size_t most_records = 10'000; // a longer list gets a single hash
  static constexpr std::size_t digits = 16;           // kept of each SHA-256

  std::vector<list_hashes> lists;
  std::string sha256; // of the whole data set, 64 digits

  friend bool operator==(const data_set_hashes&, const data_set_hashes&) = default;
};

// Hashes the content that a data file of the current layout would have, without file name and version. Any thread.
data_set_hashes hashes_of(const prevesk_dataset_data_type& data);

// The differences, as in "3 loads, 1 constant and the end of the run"; empty: none.
std::string changes_in_words(const data_set_hashes& before, const data_set_hashes& now);

} // namespace vesk
