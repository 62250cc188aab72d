#include "app/priority_control.h"

namespace vesk {

namespace {

constexpr int stopped = 0, normal = 3, overdrive = 6;
constexpr int overdrive_thread_priority = -2;

bool stop(int& position, priority_platform& platform) {
  if (position == stopped) return true;
  const bool was_high = position == overdrive;
  if (was_high && !platform.set_process_class(process_class::normal)) return false;
  if (!platform.suspend()) {
    if (was_high) platform.set_process_class(process_class::high);
    return false;
  }
  position = stopped;
  return true;
}

bool go_overdrive(int& position, priority_platform& platform) {
  if (position == overdrive) return true;
  if (!platform.set_process_class(process_class::high)) return false;
  if (!platform.set_thread_priority(overdrive_thread_priority)) {
    if (!platform.set_process_class(process_class::normal)) position = overdrive;
    return false;
  }
  position = overdrive;
  return true;
}

bool go_between(int p, int& position, priority_platform& platform) {
  if (position == overdrive && !platform.set_process_class(process_class::normal)) return false;
  if (!platform.set_thread_priority(p - normal)) return false;
  position = p;
  return true;
}

} // namespace

bool change_priority(int p, int& priority_position, priority_platform& platform) {
  if (p == stopped) return stop(priority_position, platform);
  const bool was_stopped = priority_position == stopped;
  if (was_stopped && !platform.resume()) return false;
  const bool changed =
      p == overdrive ? go_overdrive(priority_position, platform) : go_between(p, priority_position, platform);
  if (!changed && priority_position == stopped) platform.suspend(); // else it would run while the track bar says "Stop"
  return changed;
}

} // namespace vesk
