// The lock on the results of a run: no two runs write the same ones, whichever machines or containers they are on, and
// nothing is removed but what a dead run has left.
//
// The results of a run all begin with one path, its base: /data/river of /data/river.nc and /data/river_oxygen.csv. The
// lock is on the hidden file /data/.river.run, which says who holds it: flock, or an open file description lock where
// flock is refused. The system drops it when its process dies, however that happens, so a file that is left over locks
// nothing. A program that the holder starts does not inherit the lock; a forked child does, so take it after a fork.
#pragma once

#include "platform/file_io.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/types.h>

namespace vesk {

// Another run holds the lock, or its name belongs to something that is not a lock file: one sentence.
class output_lock_refused : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

class output_lock {
public:
  // Takes the lock or throws output_lock_refused; does not wait for another run to end. Then removes what dead runs of
  // this base have left unfinished: regular files BASE.part-HOST-PROCESS- and 16 hexadecimal digits.
  explicit output_lock(const std::filesystem::path& base);

  // Deletes the lock file, then drops the lock. Not in a forked child, which does not own it.
  ~output_lock();
  output_lock(const output_lock&) = delete;
  output_lock& operator=(const output_lock&) = delete;

  // Empty while the lock is held. Else one sentence that says why there cannot be one in this folder; then nothing is
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
  pid_t process_;              // that has made this object
  std::string warning_;
};

} // namespace vesk
