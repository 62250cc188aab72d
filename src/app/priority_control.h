// The priority track bar's seven positions, from "Stopped" to "Turbo Overdrive".
#pragma once

#include <string_view>

namespace vesk {

inline constexpr std::string_view priority_words[] = {"Stopped", "Idle",  "Slow",           "Normal",
                                                      "Fast",    "Turbo", "Turbo Overdrive"};

enum class process_class { normal, high };

// The requests of a change of priority to the platform, for one worker. Each is false if refused.
class priority_platform {
public:
  virtual ~priority_platform() = default;
  virtual bool suspend() = 0;
  virtual bool resume() = 0;
  virtual bool set_process_class(process_class wanted) = 0;
  virtual bool set_thread_priority(int value) = 0; // -2 lowest, 0 normal, 2 highest
};

// Moves the worker from `priority_position` to `p`, both 0 to 6. On success `priority_position` is `p`. After a refusal
// (false) it is unchanged; only if a raised class could not be lowered again, it is the top position. Earlier steps
// that succeeded are not reverted, with two exceptions: a change of class on the way to a stop or to the top, and a
// stopped worker, which is stopped again.
bool change_priority(int p, int& priority_position, priority_platform& platform);

} // namespace vesk
