// Which series are older than the tables that their queries read.
#pragma once

#include "dataset/file_origin.h"
#include "dataset/records.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>

namespace vesk {

// The times of the tables are looked up once for each file and kept until `forget`: a tree draws many series of one
// table. Main thread.
class source_ages {
public:
  void forget() { written_.clear(); }

  // "gauges.csv has changed since this series was filled from it.": its table was written after the series was filled,
  // or, for one that has not been filled since, after the data file was. Empty: not so, or not known, or the query is
  // deferred and so executed before each run. `origin`: of the data set.
  std::string sentence(const stored_series& series, const file_origin& origin);

private:
  std::optional<std::int64_t> written(const std::string& file, const std::filesystem::path& folder);

  std::unordered_map<std::string, std::optional<std::int64_t>> written_; // nanoseconds since 1970; nothing: no file
};

} // namespace vesk
