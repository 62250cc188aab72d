// How long the next step is. Days throughout.
#ifndef REFERENCE_ENGINE_CORE_STEP_CONTROL_H
#define REFERENCE_ENGINE_CORE_STEP_CONTROL_H

#include "core/equations.h"

#include <utility>
#include <vector>

namespace reference_engine {

struct StepRules {
  std::vector<std::pair<double, double>> steps; // moment and step from then on; the first holds before it, too
  double largest = 1, smallest = 0;
  double fraction = 0.9; // of the stability limit that may be used
  bool automatic = true; // shorten the step to the limit; else take it as given and refuse one beyond the limit

  // Throws InputError for a step of 0 or less, or none at all.
  void check() const;
  double given(double now) const;
};

// What keeps a step from being longer.
enum class StepBound { given, largest, transport, reactions, event };

struct StepChoice {
  double days = 0;
  StepBound bound = StepBound::given;
  std::size_t segment = 0; // for the bounds `transport` and `reactions`
};

// A step from `now` that divides the time to the next event, `remaining`, into equal parts. Throws RunError, naming the
// segment, where transport and first-order losses leave no step that the rules allow. Losses that saturate shorten an
// automatic step as far as the smallest allowed, or a second, and never refuse one: integrators limit them.
StepChoice choose_step(const StepRules& rules, const StepLimit& limit, const Problem& problem, double now,
                       double remaining);

} // namespace reference_engine

#endif
