// Saving a file so that the old one is never lost.
//
// The new content is written to a separate file in the target's folder and replaces the target only when all of it is
// on disk. On any failure before that the old file remains unchanged and the new one is removed. Until it is complete
// the new file has no name, so a program that is killed leaves no file, except between naming and renaming. On
// file systems without unnamed files it is a hidden file from the start, `.vesk-` and a number. The next save into the
// same folder removes hidden files whose writers are gone; a lock (flock) tells them apart.
//
// A symbolic link is kept, and the file it points to is replaced. The old file's permissions are kept, except set-id
// bits, as are its owner and group if the system permits; a new file gets the usual mode. Other hard links to the old
// file keep the old content. Anything that is not a regular file (a device, a pipe, `/dev/stdout` if it is one of
// these) has no content to lose and is written directly.
#pragma once

#include "platform/file_io.h"

#include <filesystem>
#include <string>

namespace vesk {

class safe_file {
public:
  // Throws file_open_exception if the folder is missing or not writable, or the target is a directory or
  // write-protected.
  explicit safe_file(const std::filesystem::path& target);
  safe_file(const safe_file&) = delete;
  safe_file& operator=(const safe_file&) = delete;

  // Leaves the target unchanged unless `commit` was called.
  ~safe_file();

  // The open file; write it from its first byte.
  int descriptor() const { return file_.get(); }

  // Flushes the new content and replaces the target. Throws file_exception; the target is then unchanged.
  void commit();

private:
  void create_beside(const std::filesystem::path& target, unsigned mode);
  bool under_new_name(const auto& create);
  bool give_name();
  void remove_temporary() noexcept;

  std::string name_;        // the target as named by the caller, for messages
  std::string target_name_; // without the folder
  std::string temporary_;   // without the folder; empty while the file has no name
  file_descriptor folder_;  // not open if the target is written directly
  file_descriptor file_;
};

} // namespace vesk
