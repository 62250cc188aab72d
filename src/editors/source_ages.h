// Finds series that are older than the tables their queries read.
#pragma once

#include "dataset/file_origin.h"
#include "dataset/records.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>

namespace vesk {

// The time of each table file is looked up once and kept until `forget`: a tree draws many series of one table. Main
// thread.
class source_ages {
public:
  void forget() { written_.clear(); }

  // "gauges.csv has changed since this series was filled from it.": the table was written after the series was filled
  // or, if it was never filled, after the data file was written. Empty: unchanged or unknown, or the query is deferred
  // and so executed before each run. `origin`: of the data set.
  std::string sentence(const stored_series& series, const file_origin& origin);

private:
  std::optional<std::int64_t> written(const std::string& file, const std::filesystem::path& folder);

  // Nanoseconds since 1970; nothing: the file does not exist.
  std::unordered_map<std::string, std::optional<std::int64_t>> written_;
};

} // namespace vesk
