#include "app/time_remaining.h"

#include <algorithm>
#include <cstdio>

namespace vesk {

std::string time_remaining_text(int elapsed_seconds, int progress_percent) {
  const double fraction = progress_percent * 0.01;
  double remaining = fraction == 0 ? 0.0 : elapsed_seconds / fraction - elapsed_seconds;
  remaining = std::clamp(remaining, -2147483648.0, 2147483647.0); // a negative percentage wraps here, for compatibility
  const auto seconds = static_cast<unsigned>(static_cast<int>(remaining));
  char text[64];
  std::snprintf(text, sizeof text, " Time remaining: %d:%02d:%02d", static_cast<int>(seconds / 3600),
                static_cast<int>(seconds % 3600 / 60), static_cast<int>(seconds % 60));
  return text;
}

} // namespace vesk
