#include "core/euler.h"

#include "core/reaction_limit.h"

#include <algorithm>
#include <limits>

namespace reference_engine {

namespace {

// Segments of one block: coefficients and rates stay in the second-level cache while all systems are replaced.
constexpr std::size_t block = 2048;

} // namespace

StepLimit Euler::limit(Equations& equations, const State& state, double days) {
  equations.move_to(state.day + days / 2);
  equations.set_volumes(state.volume);
  return equations.limit(state);
}

void Euler::step(Equations& equations, State& state, double days, Balances& balances) {
  equations.move_to_middle(state.day, days);
  equations.set_volumes(state.volume);
  prepare(equations, state, days);
  gather(equations, state, days, balances);
  const bool reacts = equations.kinetics().reacts();
  const std::size_t count = state.volume.size();
  const bool limits_reactions = reacts && !equations.problem().negative_allowed;
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count);
    for (std::size_t s = 0; reacts && s < old_rows_.size(); ++s) {
      old_rows_[s] = state.of(s).data() + begin;
      // What limited reactions are worked out anew from.
      if (limits_reactions) std::copy_n(old_rows_[s], end - begin, &old_[s * block]);
    }
    if (reacts) equations.kinetics().rates(begin, end, old_rows_.data(), rate_rows_.data());
    bool beyond = false;
    for (std::size_t c = 0; c < scaled_.size(); ++c)
      beyond = advance_class(equations, c, begin, end, reacts, state) || beyond;
    if (beyond && limits_reactions) limit_reactions(equations, begin, end, state);
    for (const TransportClass& it : equations.classes()) {
      for (const std::size_t system : it.systems()) {
        if (beyond) hold_limits(equations.problem(), system, begin, end, state, balances);
        if (reacts) balances.systems[system].moved.reacted += days * reacted(system, begin, end, state);
      }
    }
  }
  state.volume.swap(new_volume_);
  state.day += days;
}

// Coefficients change only with flows, volumes, rates and the step.
void Euler::prepare(const Equations& equations, const State& state, double days) {
  const std::size_t count = state.volume.size(), systems = equations.problem().systems.size();
  if (version_ == 0) {
    scaled_.resize(equations.classes().size());
    for (Scaled& it : scaled_)
      for (auto* part : {&it.keep, &it.lower, &it.upper}) part->resize(count);
    per_gram_.resize(count);
    per_rate_.resize(count);
    gain_.assign(systems, std::vector<double>(equations.gaining().size()));
    before_.resize(systems);
    old_.resize(systems * block);
    stoichiometry_ = equations.kinetics().stoichiometry();
    old_rows_.resize(systems);
    rate_.assign(systems * block, 0.0);
    for (std::size_t s = 0; s < systems; ++s) rate_rows_.push_back(&rate_[s * block]);
  }
  if (version_ == equations.version() && days_ == days) return;
  version_ = equations.version();
  days_ = days;
  find_new_volumes(equations, state, days);
  for (std::size_t i = 0; i < count; ++i) {
    per_gram_[i] = days / new_volume_[i];
    per_rate_[i] = per_gram_[i] * state.volume[i];
  }
  const CoefficientLayout& layout = equations.network().layout();
  for (std::size_t c = 0; c < scaled_.size(); ++c) {
    const double* const coefficients = equations.classes()[c].coefficients().data();
    Scaled& it = scaled_[c];
    for (std::size_t i = 0; i < count; ++i) {
      it.keep[i] = (state.volume[i] - days * coefficients[layout.out(i)]) / new_volume_[i];
      it.lower[i] = per_gram_[i] * coefficients[layout.lower(i)];
      it.upper[i] = per_gram_[i] * coefficients[layout.upper(i)];
    }
  }
}

// Whatever needs old concentrations of other blocks is taken before the first block is replaced.
void Euler::gather(const Equations& equations, const State& state, double days, Balances& balances) {
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      std::ranges::fill(gain_[system], 0.0);
      equations.add_far_gains(it, state.of(system).data(), gain_[system]);
      MassFlux& moved = balances.systems[system].moved;
      moved.add(equations.add_sources(system, gain_[system]), days);
      moved.add(equations.losses(it, state.of(system).data()), days);
    }
  }
  balances.water.inflow += days * equations.network().water_in();
  balances.water.outflow += days * equations.network().water_released();
}

bool Euler::advance_class(const Equations& equations, std::size_t its_class, std::size_t begin, std::size_t end,
                          bool reacts, State& state) {
  const Problem& problem = equations.problem();
  const auto systems = equations.classes()[its_class].systems();
  const Scaled& it = scaled_[its_class];
  const AdvanceShares shares{.keep = &it.keep[begin],
                             .lower = &it.lower[begin],
                             .upper = &it.upper[begin],
                             .per_rate = &per_rate_[begin],
                             .least = limits(problem, systems.front()).least};
  rows_.clear();
  for (const std::size_t system : systems) {
    const std::span<double> values = state.of(system);
    rows_.push_back({.rate = rate_rows_[system],
                     .values = &values[begin],
                     .before = begin > 0 ? before_[system] : 0.0,
                     .behind = end < values.size() ? values[end] : 0.0,
                     .most = limits(problem, system).most});
  }
  bool beyond = advance(end - begin, shares, rows_, reacts);
  for (std::size_t r = 0; r < systems.size(); ++r) {
    before_[systems[r]] = rows_[r].before;
    beyond = add_gains(equations, systems[r], begin, end, state) || beyond;
  }
  return beyond;
}

double Euler::reacted(std::size_t system, std::size_t begin, std::size_t end, const State& state) const {
  const double* const rate = rate_rows_[system];
  double sum = 0;
  for (std::size_t i = begin; i < end; ++i) sum += state.volume[i] * rate[i - begin];
  return sum;
}

// Where a concentration has fallen below 0, the reactions of that segment take less, and the rates with them.
void Euler::limit_reactions(const Equations& equations, std::size_t begin, std::size_t end, State& state) {
  const std::size_t systems = stoichiometry_.systems;
  std::vector<double> old(systems), amounts(systems), rates(systems), extents(stoichiometry_.reactions());
  for (std::size_t i = begin; i < end; ++i) {
    bool is_short = false;
    for (std::size_t s = 0; s < systems; ++s) {
      const bool simulated = equations.problem().systems[s].simulated;
      const double rate = rate_rows_[s][i - begin];
      old[s] = old_[s * block + i - begin];
      amounts[s] = simulated ? state.of(s)[i] - per_rate_[i] * rate : std::numeric_limits<double>::infinity();
      is_short = is_short || (simulated && state.of(s)[i] < 0 && rate < 0);
    }
    if (!is_short) continue;
    equations.kinetics().extents(i, old.data(), extents.data());
    for (double& extent : extents) extent *= per_rate_[i];
    limit_extents(stoichiometry_, amounts, extents);
    add_up(stoichiometry_, extents, rates);
    for (std::size_t s = 0; s < systems; ++s) {
      if (!equations.problem().systems[s].simulated) continue;
      state.of(s)[i] = amounts[s] + rates[s];
      rate_rows_[s][i - begin] = rates[s] / per_rate_[i];
    }
    note_limited(i, state.day);
  }
}

bool Euler::add_gains(const Equations& equations, std::size_t system, std::size_t begin, std::size_t end,
                      State& state) const {
  const Limits limit = limits(equations.problem(), system);
  const auto gaining = equations.gaining();
  const std::span<double> values = state.of(system);
  bool outside_limits = false;
  for (auto at = std::lower_bound(gaining.begin(), gaining.end(), begin); at != gaining.end() && *at < end; ++at) {
    double& value = values[*at];
    value += per_gram_[*at] * gain_[system][static_cast<std::size_t>(at - gaining.begin())];
    outside_limits = outside_limits || !(value >= limit.least && value <= limit.most);
  }
  return outside_limits;
}

} // namespace reference_engine
