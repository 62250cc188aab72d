// Saving a file so that the old one is never lost.
//
// The new content is written to a separate file beside the target and takes the target's place only when all of it
// is on the disk. Whatever goes wrong before, the old file stays as it was and the new one is removed. Until it is
// whole it has no name, so that a program that is killed leaves nothing, but for the moment between naming and
// renaming; where the file system has no files without names it is a hidden file, `.vesk-` and a number, from the
// start. Hidden files whose writers are gone are removed by the next saving into the same folder; a lock (flock) tells
// them apart.
//
// A symbolic link stays and what it points at is replaced. The old file's permissions stay, but never its set-id
// bits, and its owner and group where the system permits; a new file gets the usual mode. Other hard links to the old
// file keep the old content. What is no regular file (a device, a pipe, `/dev/stdout` where it is one) has no content
// to lose and is written to directly.
#pragma once

#include "platform/file_io.h"

#include <filesystem>
#include <string>

namespace vesk {

class safe_file {
public:
  // Throws file_open_exception: the folder is missing or not writable, the target is a directory or write-protected.
  explicit safe_file(const std::filesystem::path& target);
  safe_file(const safe_file&) = delete;
  safe_file& operator=(const safe_file&) = delete;

  // Without a `commit` before, leaves the target as it was.
  ~safe_file();

  // The open file to write to, from its first byte on.
  int descriptor() const { return file_.get(); }

  // Flushes what was written and lets it take the target's place. Throws file_exception; the target is then as it
  // was.
  void commit();

private:
  void create_beside(const std::filesystem::path& target, unsigned mode);
  bool under_new_name(const auto& create);
  bool give_name();
  void remove_temporary() noexcept;

  std::string name_;        // as the caller named the target, for messages
  std::string target_name_; // in the folder
  std::string temporary_;   // in the folder; empty while the file has no name
  file_descriptor folder_;  // not open when the target is written to directly
  file_descriptor file_;
};

} // namespace vesk
