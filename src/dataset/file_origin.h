// The file that a data set came from.
#pragma once

#include "platform/file_identity.h"

#include <filesystem>
#include <optional>

namespace vesk {

// The file that a data set was read from or last saved to, as it was then. Saving over this file takes nothing away
// that the data set did not have, so it needs no question; saving over any other one does. A data set has none when it
// is new, and when reading its file dropped something.
struct file_origin {
  std::filesystem::path file; // absolute; empty: none
  file_identity identity;     // of that file when it was read or written

  bool is_set() const { return !file.empty(); }

  // Says nothing about the content of a data set, so all are equal.
  friend bool operator==(const file_origin&, const file_origin&) { return true; }
};

// The origin of what has just been read from or written to `file`, whose identity was `then`; none without one.
file_origin origin_of(const std::filesystem::path& file, const std::optional<file_identity>& then);

} // namespace vesk
