// A millisecond tick counter that costs one load to read.
//
// Keyword calls take nanoseconds and each is timed in milliseconds; reading a real clock on both sides would cost ten
// times the call. Instead a thread of its own writes the time into a counter every millisecond, as long as somebody
// wants it.
#pragma once

#include <atomic>
#include <cstdint>

namespace vesk {

class millisecond_clock {
public:
  // Keeps the counter running while the object lives. Any thread.
  millisecond_clock();
  ~millisecond_clock();
  millisecond_clock(const millisecond_clock&) = delete;
  millisecond_clock& operator=(const millisecond_clock&) = delete;

  // Milliseconds since some moment in the past; wraps around. Stands still while no millisecond_clock lives.
  static std::uint32_t now() { return ticks_.load(std::memory_order_relaxed); }

private:
  static std::atomic<std::uint32_t> ticks_;
};

} // namespace vesk
