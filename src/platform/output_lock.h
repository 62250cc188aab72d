// The lock on the results of a run: no two runs write the same results, whichever machines or containers they are on,
// and only files of dead runs are removed.
//
// The results of a run share one path prefix, their base: /data/river for /data/river.nc and /data/river_oxygen.csv.
// The lock is on the hidden file /data/.river.run, which names its holder: flock, or an open file description lock if
// flock is refused. The system releases it when the process ends in any way, so a leftover file locks
// nothing. Programs started by the holder do not inherit the lock; a forked child does, so take it after a fork.
#pragma once

#include "platform/file_io.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/types.h>

namespace vesk {

// Another run holds the lock, or its name belongs to a file that is not a lock: one sentence.
class output_lock_refused : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

class output_lock {
public:
  // Takes the lock or throws output_lock_refused; does not wait for another run to end. Then removes the unfinished
  // files of dead runs with this base: regular files BASE.part-HOST-PROCESS- and 16 hexadecimal digits.
  explicit output_lock(const std::filesystem::path& base);

  // Deletes the lock file, then releases the lock. Not in a forked child, which does not own it.
  ~output_lock();
  output_lock(const output_lock&) = delete;
  output_lock& operator=(const output_lock&) = delete;

  // Empty if the lock is held. Otherwise one sentence that says why this folder does not support locks; then nothing is
  // locked and nothing was removed.
  const std::string& warning() const { return warning_; }

private:
  enum class outcome { taken, again, held, impossible };

  outcome try_to_take();
  bool open_file();
  bool has_its_name() const;
  void say_who_holds();
  std::string holder() const;

  std::filesystem::path base_;
  std::filesystem::path name_; // of the lock file
  file_descriptor file_;       // the lock's
  pid_t process_;              // that created this object
  std::string warning_;
};

} // namespace vesk
