#include "core/runge_kutta.h"

#include <algorithm>
#include <array>

namespace reference_engine {

namespace {
constexpr std::size_t block = 512; // segments of which all systems' changes are worked out together

// Kutta's tableau (Hairer, Norsett, Wanner, Solving Ordinary Differential Equations I, 1993, table 1.2): the moment of
// each stage and its weight in the result, as shares of the step.
struct Stage {
  double moment, weight;
};
constexpr std::array<Stage, 4> tableau = {{{0, 1.0 / 6}, {0.5, 1.0 / 3}, {0.5, 1.0 / 3}, {1, 1.0 / 6}}};
} // namespace

StepLimit RungeKutta::limit(Equations& equations, const State& state, double days) {
  equations.move_to(state.day + days);
  equations.set_volumes(state.volume);
  StepLimit limit = equations.limit(state);
  equations.move_to(state.day); // last, as the first stage needs it
  equations.set_volumes(state.volume);
  const StepLimit at_begin = equations.limit(state);
  if (at_begin.days < limit.days) limit.days = at_begin.days, limit.segment = at_begin.segment;
  if (at_begin.saturated_days < limit.saturated_days)
    limit.saturated_days = at_begin.saturated_days, limit.saturated_segment = at_begin.saturated_segment;
  return limit;
}

void RungeKutta::step(Equations& equations, State& state, double days, Balances& balances) {
  prepare(equations, state);
  const Balances before = balances;
  stage_volume_ = state.volume;
  for (std::size_t k = 0; k < tableau.size(); ++k) {
    const double to_next = k + 1 < tableau.size() ? tableau[k + 1].moment : 0.0; // the last has none
    equations.move_to(state.day + tableau[k].moment * days);
    equations.set_volumes(stage_volume_);
    if (k == 1) find_new_volumes(equations, state, days);
    stage(equations, state, tableau[k].weight, to_next, days, balances);
    now_.swap(next_);
    stage_volume_.swap(next_volume_);
  }
  if (!equations.problem().negative_allowed && falls_below_zero(equations, state, days)) {
    balances = before;
    return Euler::step(equations, state, days, balances);
  }
  const std::size_t count = state.volume.size();
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      double* const values = state.of(system).data();
      const double* const sum = &sum_[system * count];
      for (std::size_t i = 0; i < count; ++i)
        values[i] = (state.volume[i] * values[i] + days * sum[i]) / new_volume_[i];
      hold_limits(equations.problem(), system, 0, count, state, balances);
    }
  }
  state.volume.swap(new_volume_);
  state.day += days;
}

bool RungeKutta::falls_below_zero(const Equations& equations, const State& state, double days) const {
  const std::size_t count = state.volume.size();
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      const auto values = state.of(system);
      for (std::size_t i = 0; i < count; ++i)
        if (state.volume[i] * values[i] + days * sum_[system * count + i] < 0) return true;
    }
  }
  return false;
}

void RungeKutta::prepare(const Equations& equations, const State& state) {
  const std::size_t count = state.volume.size(), systems = equations.problem().systems.size();
  if (stride_ == 0) {
    stride_ = count + 2;
    now_.assign(systems * stride_, 0.0);
    next_.assign(systems * stride_, 0.0);
    sum_.resize(systems * count);
    gain_.assign(systems, std::vector<double>(equations.gaining().size()));
    next_volume_.resize(count);
    change_.resize(block);
    rate_.assign(systems * block, 0.0);
    now_rows_.resize(systems);
    for (std::size_t s = 0; s < systems; ++s) rate_rows_.push_back(&rate_[s * block]);
  }
  std::fill(sum_.begin(), sum_.end(), 0.0);
  for (std::size_t s = 0; s < systems; ++s) {
    std::ranges::copy(state.of(s), of(now_, s));
    std::ranges::copy(state.of(s), of(next_, s)); // a system that is not simulated is the same at each stage
  }
}

// Adds this stage's changes to the sum and makes the next stage's concentrations, at the share to_next of the step (0:
// there is none).
void RungeKutta::stage(const Equations& equations, const State& state, double weight, double to_next, double days,
                       Balances& balances) {
  const auto volume_change = equations.network().volume_change();
  const std::size_t count = state.volume.size();
  for (std::size_t i = 0; i < count; ++i) next_volume_[i] = state.volume[i] + to_next * days * volume_change[i];
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      std::ranges::fill(gain_[system], 0.0);
      equations.add_far_gains(it, of(now_, system), gain_[system]);
      MassFlux& moved = balances.systems[system].moved;
      moved.add(equations.add_sources(system, gain_[system]), weight * days);
      moved.add(equations.losses(it, of(now_, system)), weight * days);
    }
  }
  balances.water.inflow += weight * days * equations.network().water_in();
  balances.water.outflow += weight * days * equations.network().water_released();
  const bool reacts = equations.kinetics().reacts();
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count);
    for (std::size_t s = 0; s < now_rows_.size(); ++s) now_rows_[s] = of(now_, s) + begin;
    if (reacts) equations.kinetics().rates(begin, end, now_rows_.data(), rate_rows_.data());
    for (const TransportClass& it : equations.classes()) {
      for (const std::size_t system : it.systems()) {
        change_block(equations, it, system, begin, end);
        double reacted = 0;
        for (std::size_t i = begin; reacts && i < end; ++i) reacted += stage_volume_[i] * rate_rows_[system][i - begin];
        balances.systems[system].moved.reacted += weight * days * reacted;
        const double* const old = state.of(system).data();
        double* const sum = &sum_[system * count];
        double* const next = of(next_, system);
        for (std::size_t i = begin; i < end; ++i) {
          const double change = change_[i - begin];
          sum[i] += weight * change;
          if (to_next > 0) next[i] = (state.volume[i] * old[i] + to_next * days * change) / next_volume_[i];
        }
      }
    }
  }
}

// The change of one system's mass in a block of segments, g/day.
void RungeKutta::change_block(const Equations& equations, const TransportClass& its_class, std::size_t system,
                              std::size_t begin, std::size_t end) {
  const CoefficientLayout& layout = equations.network().layout();
  const double* const coefficients = its_class.coefficients().data();
  const double* const out = coefficients + layout.out(begin);
  const double* const lower = coefficients + layout.lower(begin);
  const double* const upper = coefficients + layout.upper(begin);
  const double* const now = of(now_, system) + begin;
  const std::size_t size = end - begin;
  for (std::size_t k = 0; k < size; ++k)
    change_[k] = lower[k] * *(now + k - 1) - out[k] * now[k] + upper[k] * now[k + 1];
  if (equations.kinetics().reacts())
    for (std::size_t k = 0; k < size; ++k) change_[k] += stage_volume_[begin + k] * rate_rows_[system][k];
  const auto gaining = equations.gaining();
  for (auto at = std::lower_bound(gaining.begin(), gaining.end(), begin); at != gaining.end() && *at < end; ++at)
    change_[*at - begin] += gain_[system][static_cast<std::size_t>(at - gaining.begin())];
}

} // namespace reference_engine
