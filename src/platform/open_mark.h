// A mark that a file is open in this program, for other programs of the same user on this machine.
//
// The mark is a shared lock (flock) on a small file in a folder of the user's; the file itself is never touched. The
// system releases it when the process dies.
#pragma once

#include "platform/file_io.h"

#include <filesystem>

namespace vesk {

class open_mark {
public:
  open_mark() = default;
  ~open_mark();
  open_mark(open_mark&& other) noexcept = default;
  open_mark& operator=(open_mark&& other) noexcept;

  // `folder`: of the marks, created if needed. Never fails: without a folder that can be written, files are not marked.
  open_mark(const std::filesystem::path& file, const std::filesystem::path& folder);

  bool was_alone() const { return was_alone_; } // no other program had marked the file

private:
  void release() noexcept;

  std::filesystem::path name_; // of the mark
  file_descriptor lock_;
  bool was_alone_ = true;
};

} // namespace vesk
