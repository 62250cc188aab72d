// A piece of work in a separate process, whose calls to the operating system are decided on one by one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace vesk {

struct system_call {
  int index;            // from 0, counted from the first one of the work
  std::uint64_t number; // as SYS_openat
  std::uint64_t arguments[6];
};

// What becomes of a call: 0 lets it happen; a positive number is the errno that it ends with instead; `kill_process`
// ends the process before it happens.
constexpr int kill_process = -1;
using call_decision = std::function<int(const system_call&)>;

struct traced_end {
  std::string refusal; // why the system does not permit all this; then nothing else counts
  bool killed = false;
  int status = -1; // what `work` returned, else the process's exit status, or 128 and the signal that ended it
};

// Forks, so there should be one thread. What `work` throws ends its process.
traced_end run_traced(const std::function<int()>& work, const call_decision& decide);

} // namespace vesk
