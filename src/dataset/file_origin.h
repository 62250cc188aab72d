// The file that a data set came from.
#pragma once

#include "platform/file_identity.h"

#include <filesystem>
#include <optional>

namespace vesk {

// The file that a data set was read from or last saved to, and its state at that time. Saving over this file loses
// nothing that the data set did not have, so it needs no confirmation; saving over any other file does. A new data set
// has no origin, nor does one whose reading dropped something.
struct file_origin {
  std::filesystem::path file; // absolute; empty: none
  file_identity identity;     // of that file when it was read or written

  bool is_set() const { return !file.empty(); }

  // Not part of a data set's content, so all are equal.
  friend bool operator==(const file_origin&, const file_origin&) { return true; }
};

// The origin after `file`, with identity `then`, has been read or written; none without an identity.
file_origin origin_of(const std::filesystem::path& file, const std::optional<file_identity>& then);

} // namespace vesk
