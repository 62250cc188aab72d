// Work in a child process: signals are passed on, a time limit is kept, and its end is always known.
#pragma once

#include "runs/run_record.h"

#include <functional>
#include <optional>
#include <sys/types.h>

namespace vesk {

struct child_end {
  int status = 0;          // the exit status; of no meaning after a signal
  int signal = 0;          // that ended it; 0: none
  bool timed_out = false;  // it was ended for the time limit
  bool terminated = false; // SIGTERM was passed on to it
  process_use use;
};

// Forks; the child does `work` and ends with its result. Call it while the process has one thread. `time_limit`: in
// seconds; the child gets SIGTERM then, and SIGKILL five seconds later. The child dies with this process. SIGINT,
// SIGTERM and SIGHUP go to the child, which decides. Throws file_exception when there can be no child.
child_end supervise(const std::function<int()>& work, std::optional<double> time_limit);

// Whether one of these signals has come since the last child was started.
bool supervision_was_interrupted();

} // namespace vesk
