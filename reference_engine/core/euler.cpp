#include "core/euler.h"

#include <algorithm>

namespace reference_engine {

namespace {

// Segments of one block: the coefficients stay in the first-level cache while one system after the other is replaced.
constexpr std::size_t block = 512;

} // namespace

void Euler::step(const Equations& equations, State& state, double days, MassBalance* balance) {
  prepare(equations, state, days);
  gather(equations, state, days, balance);
  const Problem& problem = equations.problem();
  const bool reacts = equations.kinetics().reacts();
  const std::size_t count = state.volume.size();
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count);
    if (reacts) {
      for (std::size_t s = 0; s < old_rows_.size(); ++s) old_rows_[s] = state.of(s).data() + begin;
      equations.kinetics().rates(begin, end, old_rows_.data(), rate_rows_.data());
    }
    for (std::size_t c = 0; c < scaled_.size(); ++c) {
      for (const std::size_t system : equations.classes()[c].systems()) {
        Advance row = row_of(problem, c, system, begin, end, reacts, state);
        const bool moved_out = advance(end - begin, row);
        before_[system] = row.before;
        const bool gained_out = add_gains(equations, system, begin, end, state);
        if (moved_out || gained_out) hold_limits(problem, system, begin, end, state, balance);
        if (reacts && balance != nullptr && static_cast<int>(system) == problem.balance_system)
          for (std::size_t i = begin; i < end; ++i)
            balance->moved.reacted += days * state.volume[i] * rate_rows_[system][i - begin];
      }
    }
  }
  state.volume.swap(new_volume_);
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
void Euler::gather(const Equations& equations, const State& state, double days, MassBalance* balance) {
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      equations.gains(it, system, state.of(system).data(), gain_[system]);
      if (balance != nullptr && static_cast<int>(system) == equations.problem().balance_system)
        balance->moved.add(equations.flux(it, system, state.of(system).data()), days);
    }
  }
}

Advance Euler::row_of(const Problem& problem, std::size_t its_class, std::size_t system, std::size_t begin,
                      std::size_t end, bool reacts, State& state) const {
  const Scaled& it = scaled_[its_class];
  const Limits limit = limits(problem, system);
  const std::span<double> values = state.of(system);
  return {.keep = &it.keep[begin],
          .lower = &it.lower[begin],
          .upper = &it.upper[begin],
          .per_rate = &per_rate_[begin],
          .rate = reacts ? rate_rows_[system] : nullptr,
          .values = &values[begin],
          .before = begin > 0 ? before_[system] : 0.0,
          .behind = end < values.size() ? values[end] : 0.0,
          .least = limit.least,
          .most = limit.most};
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
