// Adds its own lifetime to a counter of milliseconds.
#pragma once

#include <chrono>
#include <cstdint>

namespace vesk {

class millisecond_timer {
public:
  // `total` must outlive the object. Null: nothing is measured, and no clock is read.
  explicit millisecond_timer(std::uint32_t* total) : total_(total), began_(total ? now() : 0) {}
  ~millisecond_timer() {
    if (total_) *total_ += now() - began_;
  }
  millisecond_timer(const millisecond_timer&) = delete;
  millisecond_timer& operator=(const millisecond_timer&) = delete;

private:
  // Whole milliseconds of a steady clock; wraps around. The differences add up to the true total over many calls,
  // although most calls take much less than a millisecond.
  static std::uint32_t now() {
    using namespace std::chrono;
    return static_cast<std::uint32_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
  }

  std::uint32_t* total_;
  std::uint32_t began_;
};

} // namespace vesk
