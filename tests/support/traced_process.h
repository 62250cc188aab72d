// Runs code in a separate process and decides on each of its system calls.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace vesk {

struct system_call {
  int index;            // from 0: the first call of the code
  std::uint64_t number; // as SYS_openat
  std::uint64_t arguments[6];
};

// The fate of a call: 0 lets it happen; a positive number is the errno with which it fails instead; `kill_process` ends
// the process before it happens.
constexpr int kill_process = -1;
using call_decision = std::function<int(const system_call&)>;

struct traced_end {
  std::string refusal; // why the system does not permit tracing; the rest is then undefined
  bool killed = false;
  int status = -1; // what `work` returned, else the process's exit status, or 128 and the signal that ended it
};

// Forks, so there should be only one thread. An exception from `work` ends its process.
traced_end run_traced(const std::function<int()>& work, const call_decision& decide);

} // namespace vesk
