// How a run ended, for programs: one number and one class.
#pragma once

#include <string_view>

namespace vesk {

// Reasons for a failure of the program itself.
enum class failure_kind {
  usage,         // a wrong option, path or row
  data,          // a file, data set or query was refused
  missing_input, // an input file does not exist or may not be read
  unavailable,   // engine or catalogue
  software,      // an exception, or an engine that ended the process
  cannot_create, // a file or folder to write to
  cannot_write,  // an error while writing
  temporary,     // may work later: results locked, disk full, table locked
};

enum : int { status_timed_out = 124, status_interrupted = 130, status_terminated = 143 };

// The status as in sysexits.h, 64 to 75.
int status_of(failure_kind kind);

// The status for an engine's return code: 1 to 63 are kept, others become 63. `bundled`: the bundled engine, whose 6 (a
// file cannot be written) and 7 (the disk is full) map to the program's own.
int status_of_return_code(int code, bool bundled);

enum class run_class { good, warnings, permanent, temporary, cancelled };

std::string_view name_of(run_class which);

// `warned`: the run gave a warning.
run_class class_of(int status, bool warned);

} // namespace vesk
