// The peak memory of this process.
#pragma once

#include <fstream>
#include <string>

namespace vesk {

// Sanitizers use additional memory for each used byte.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool memory_is_measurable = false;
#else
inline constexpr bool memory_is_measurable = true;
#endif

class peak_memory {
public:
  peak_memory() {
    std::ofstream("/proc/self/clear_refs") << 5; // resets the peak
    before_ = now();
  }
  double growth() const { return now() - before_; } // in bytes

private:
  static double now() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
      if (line.starts_with("VmHWM:")) return 1024 * std::stod(line.substr(6));
    return 0;
  }

  double before_;
};

} // namespace vesk
