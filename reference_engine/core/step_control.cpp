#include "core/step_control.h"

#include "core/errors.h"
#include "core/text.h"
#include "core/timeline.h"

#include <algorithm>
#include <cmath>

namespace reference_engine {

void StepRules::check() const {
  if (!(largest > 0)) throw InputError("The maximum time step is 0 or less.");
  if (!(fraction > 0)) throw InputError("The fraction of the maximum time step is 0 or less.");
  // Beyond the stability limit a run would go on with wrong values.
  if (automatic && fraction > 1)
    throw InputError(text("The fraction of the maximum time step is ", fraction, ", which is above 1."));
  if (steps.empty() && !automatic) throw InputError("The data set has no time step.");
  for (const auto& [day, step] : steps) {
    if (step <= 0) throw InputError(text("The time step from day ", day, " on is 0 or less."));
    if (!std::isfinite(step) || !std::isfinite(day))
      throw InputError(
          text("A time step (day ", day, ", value ", step, ") is not a finite number. Correct or delete it."));
  }
}

double StepRules::given(double now) const {
  if (steps.empty()) return largest;
  const auto later = [now](const auto& point) { return point.first > now; };
  const auto next = std::find_if(steps.begin(), steps.end(), later);
  return next == steps.begin() ? next->second : std::prev(next)->second;
}

StepChoice choose_step(const StepRules& rules, const StepLimit& limit, const Problem& problem, double now,
                       double remaining) {
  constexpr double second = 1 / seconds_per_day;
  StepChoice choice{rules.given(now)};
  const auto shorten = [&](double days, StepBound bound, std::size_t segment) {
    if (days < choice.days) choice = {days, bound, segment};
  };
  const auto where = [&] { return numbered(problem.segments[limit.segment], limit.segment); };
  if (rules.automatic) {
    const double allowed = rules.fraction * limit.days;
    if (allowed < rules.smallest)
      throw RunError(text("The stable time step in segment ", where(), " is ", allowed,
                          " days, below the minimum time step of ", rules.smallest, " days."));
    shorten(rules.largest, StepBound::largest, 0);
    shorten(allowed, StepBound::transport, limit.segment);
    shorten(std::max({rules.fraction * limit.saturated_days, rules.smallest, second}), StepBound::reactions,
            limit.saturated_segment);
  }
  constexpr double rounding = 1e-6; // steps are given in single precision; a smaller remainder is rounding
  const double parts = std::max(1.0, std::ceil(remaining / choice.days * (1 - rounding)));
  if (parts <= 1 && remaining < choice.days * (1 - rounding)) choice.bound = StepBound::event;
  choice.days = remaining / parts;
  if (choice.days < same_moment) throw RunError(text("At day ", now, " the next step is too short to go on."));
  if (!rules.automatic && choice.days > limit.days)
    throw RunError(text("The time step of ", choice.days, " days is longer than segment ", where(),
                        " allows, which is ", limit.days, " days."));
  return choice;
}

} // namespace reference_engine
