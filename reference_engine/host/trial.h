// Work that may crash or never end, tried first where it does no harm.
#ifndef REFERENCE_ENGINE_HOST_TRIAL_H
#define REFERENCE_ENGINE_HOST_TRIAL_H

#include <cstddef>
#include <functional>

namespace reference_engine {

struct TrialLimits {
  std::size_t memory = std::size_t{1} << 30; // bytes, beside what the process has already
  unsigned work = 3;                         // seconds of processor time
  unsigned wait = 15;                        // seconds of any time
};

// Does the work in a copy of this process and throws away what comes of it. False when it crashes there or takes more
// than the limits; any exception but that of memory counts as an end. True, too, where no copy can be made.
// The copy has this thread alone: the work must need no other one, nor a lock that another may hold (the C library sees
// to its own memory), nor a file that is open already. A copy that waits for such a lock ends in time.
bool survives(const std::function<void()>& work, const TrialLimits& limits = {});

} // namespace reference_engine

#endif
