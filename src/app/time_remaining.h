// Estimates a job's remaining time.
#pragma once

#include <string>

namespace vesk {

// " Time remaining: h:mm:ss", extrapolated linearly from the seconds since the job's start and the percentage reported
// by the engine; 0:00:00 while that is 0. Hours may have any number of digits.
std::string time_remaining_text(int elapsed_seconds, int progress_percent);

} // namespace vesk
