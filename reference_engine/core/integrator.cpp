#include "core/integrator.h"

#include "core/bdf.h"
#include "core/errors.h"
#include "core/euler.h"
#include "core/runge_kutta.h"
#include "core/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace reference_engine {

bool Integrator::find_new_volumes(const Equations& equations, const State& state, double days,
                                  const LayerValues& layers, double* new_volume) {
  equations.network().move_water(layers, water_);
  if (water_.steady) return false;
  change_volumes(equations.problem(), state, days, water_, layers.begin, new_volume);
  return true;
}

void Integrator::change_volumes(const Problem& problem, const State& state, double days, const WaterMoved& water,
                                std::size_t begin, double* new_volume) {
  // An emptying segment would be halved again and again by ever shorter steps. Below this share it counts as dry.
  constexpr double dry_share = 1e-3;
  const auto& segments = problem.segments;
  for (std::size_t k = 0; k < water.change.size(); ++k) {
    const std::size_t i = begin + k;
    new_volume[k] = state.volume[i] + days * water.change[k];
    if (water.change[k] < 0 && !(new_volume[k] > dry_share * segments[i].volume))
      throw InputError(text("Segment ", numbered(segments[i], i), " runs dry."));
  }
}

void Integrator::note_exceedances(const Problem& problem, const State& state) {
  for (std::size_t s = 0; s < problem.systems.size(); ++s) {
    const auto highest = std::ranges::max_element(state.of(s));
    if (problem.systems[s].simulated && highest != state.of(s).end() && *highest > limits(problem, s).most)
      note_exceedance({s, static_cast<std::size_t>(highest - state.of(s).begin()), *highest});
  }
}

void Integrator::note_exceedance(const Exceedance& it) {
  exceedances_.push_back(it);
  exceeded_.insert(it.system);
}

void Integrator::note_limited(std::size_t segment, double day) {
  if (limited_.steps == 0) limited_ = {0, segment, day};
  if (std::exchange(limited_day_, day) != day) ++limited_.steps;
}

// A system that has been reported has no upper limit any more, so that later steps do not look at it again.
Integrator::Limits Integrator::limits(const Problem& problem, std::size_t system) const {
  constexpr double unlimited = std::numeric_limits<double>::max();
  const double largest = problem.systems[system].largest_concentration;
  return {problem.negative_allowed ? -unlimited : 0.0,
          largest > 0 && !exceeded_.contains(system) ? largest : unlimited};
}

void Integrator::hold_limits(const Problem& problem, std::size_t system, std::size_t begin, std::size_t end,
                             State& state, Balances& balances) {
  Limits limit = limits(problem, system);
  const std::span<double> values = state.of(system);
  for (std::size_t i = begin; i < end; ++i) {
    if (values[i] >= limit.least && values[i] <= limit.most) continue;
    if (!std::isfinite(values[i]))
      throw RunError(text("The concentration of ", problem.systems[system].name, " in segment ",
                          numbered(problem.segments[i], i),
                          " is no longer a finite number. Take shorter steps or "
                          "implicit BDF, and look at the flows, loads and rates there."));
    if (values[i] > limit.most) {
      note_exceedance({system, i, values[i]});
      limit = limits(problem, system);
      continue;
    }
    balances.systems[system].clipped -= state.volume[i] * values[i];
    values[i] = 0;
  }
}

std::unique_ptr<Integrator> make_integrator(int technique) {
  switch (technique == 0 ? Technique::explicit_euler : static_cast<Technique>(technique)) {
  case Technique::explicit_euler: return std::make_unique<Euler>();
  case Technique::runge_kutta_4: return std::make_unique<RungeKutta>();
  case Technique::implicit_bdf: return std::make_unique<Bdf>();
  }
  throw InputError(text("The solution technique ", technique, " is not known to this engine."));
}

} // namespace reference_engine
