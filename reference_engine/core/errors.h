// How a run ends early. Each carries one sentence for the modeller.
#ifndef REFERENCE_ENGINE_CORE_ERRORS_H
#define REFERENCE_ENGINE_CORE_ERRORS_H

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace reference_engine {

// The input can't be run, or a file can't be read.
struct InputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The input was good, but the run could not go on.
struct RunError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A file of results, a restart file or an export can't be written.
class WriteError : public RunError {
public:
  // error: a number of the system, 0 where none is known.
  WriteError(const std::string& file, int error)
      : RunError(file + ": can't be written" + (error != 0 ? std::string(": ") + std::strerror(error) : "") + "."),
        disk_full_(error == ENOSPC || error == EDQUOT || error == EFBIG) {}
  WriteError(const std::string& file, const std::string& cause)
      : RunError(file + ": can't be written: " + cause + ".") {}

  bool disk_full() const { return disk_full_; } // a quota or a limit of file sizes counts as well

private:
  bool disk_full_ = false;
};

} // namespace reference_engine

#endif
