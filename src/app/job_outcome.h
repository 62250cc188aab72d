// How a job ended.
#pragma once

#include "engine/model_thread.h"

#include <string>
#include <vector>

namespace vesk {

struct job_outcome {
  job_code code = job_code::run;
  bool cancelled = false;            // it was asked to stop
  bool checked = true;               // of a validity check: it was made, and nothing of severity 2 was found
  int return_code = 0;               // as set by the engine, else 0
  std::string failure;               // of an exception in the engine or a keyword; empty: none
  std::string log_loss;              // why lines of its log were lost, one sentence; empty: none was
  std::string engine_failure;        // the first line that the engine marked as a failure; empty: none
  std::vector<std::string> warnings; // the engine's lines marked as notes, at most most_warnings
  static constexpr std::size_t most_warnings = 100;

  bool failed() const { return !failure.empty(); }
  bool is_good() const { return !cancelled && !failed() && return_code == 0; }
};

} // namespace vesk
