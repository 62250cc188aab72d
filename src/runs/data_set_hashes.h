// What a data set was, in hashes of its records, so that a later one can be compared with it record by record.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vesk {

// One list of records, or one member that is not a list. Named as `vki dump` names members, a list within the records
// of another one with the other's name before it: "segments", "systems.loads", "end_date", "time_steps.points".
struct list_hashes {
  std::string name;
  std::size_t records = 0;         // in all lists of this name together
  std::vector<std::string> hashes; // one for each record in file order, without the lists in it; or one for all
  bool one_for_all() const { return hashes.size() == 1 && records != 1; }

  friend bool operator==(const list_hashes&, const list_hashes&) = default;
};

struct data_set_hashes {
  static constexpr std::size_t most_records = 10'000; // a longer list has one hash
  static constexpr std::size_t digits = 16;           // the first ones of each SHA-256

  std::vector<list_hashes> lists;
  std::string sha256; // of the whole data set, 64 digits

  friend bool operator==(const data_set_hashes&, const data_set_hashes&) = default;
};

// Of the content that a data file of the current layout would have; file name and version do not count. Any thread.
data_set_hashes hashes_of(const prevesk_dataset_data_type& data);

// What differs, as in "3 loads, 1 constant and the end of the run"; empty: nothing.
std::string changes_in_words(const data_set_hashes& before, const data_set_hashes& now);

} // namespace vesk
