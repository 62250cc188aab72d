#include "core/euler.h"

#include <algorithm>

namespace reference_engine {

namespace {

// Segments of one block: the old values of all systems stay in the first-level cache while they are replaced in place.
constexpr std::size_t block = 512;
constexpr std::size_t row = block + 2;

// old[0] is the neighbour before the block's first segment, old[count + 1] the one behind its last.
void advance(std::size_t count, const double* __restrict keep, const double* __restrict lower,
             const double* __restrict upper, const double* __restrict old, double* __restrict now) {
  for (std::size_t k = 0; k < count; ++k) now[k] = keep[k] * old[k + 1] + lower[k] * old[k] + upper[k] * old[k + 2];
}

} // namespace

void Euler::step(const Equations& equations, State& state, double days, MassBalance* balance) {
  prepare(equations, state, days);
  gather(equations, state, days, balance);
  const std::size_t count = state.volume.size();
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count);
    save_block(state, begin, end);
    carry(equations, state, begin, end);
    if (equations.kinetics().reacts()) react(equations, state, begin, end, days, balance);
    add_gains(equations, state, begin, end);
    for (const TransportClass& it : equations.classes())
      for (const std::size_t system : it.systems())
        hold_limits(equations.problem(), system, begin, end, state, balance);
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
    saved_.assign(systems * row, 0.0);
    rate_.assign(systems * block, 0.0);
    for (std::size_t s = 0; s < systems; ++s) {
      saved_rows_.push_back(&saved_[s * row + 1]);
      rate_rows_.push_back(&rate_[s * block]);
    }
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

// The last old value of the block before is still at hand in the row: it moves to its front.
void Euler::save_block(const State& state, std::size_t begin, std::size_t end) {
  const std::size_t count = state.volume.size();
  for (std::size_t s = 0; s < saved_rows_.size(); ++s) {
    double* const saved = &saved_[s * row];
    const double* const now = state.of(s).data();
    saved[0] = begin == 0 ? 0.0 : saved[block];
    std::copy(now + begin, now + end, saved + 1);
    saved[end - begin + 1] = end < count ? now[end] : 0.0;
  }
}

void Euler::carry(const Equations& equations, State& state, std::size_t begin, std::size_t end) const {
  for (std::size_t c = 0; c < scaled_.size(); ++c) {
    const Scaled& it = scaled_[c];
    for (const std::size_t system : equations.classes()[c].systems())
      advance(end - begin, &it.keep[begin], &it.lower[begin], &it.upper[begin], &saved_[system * row],
              state.of(system).data() + begin);
  }
}

void Euler::react(const Equations& equations, State& state, std::size_t begin, std::size_t end, double days,
                  MassBalance* balance) {
  equations.kinetics().rates(begin, end, saved_rows_.data(), rate_rows_.data());
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      const double* const rate = rate_rows_[system];
      double* const now = state.of(system).data();
      for (std::size_t i = begin; i < end; ++i) now[i] += per_rate_[i] * rate[i - begin];
      if (balance == nullptr || static_cast<int>(system) != equations.problem().balance_system) continue;
      for (std::size_t i = begin; i < end; ++i) balance->moved.reacted += days * state.volume[i] * rate[i - begin];
    }
  }
}

void Euler::add_gains(const Equations& equations, State& state, std::size_t begin, std::size_t end) const {
  const auto gaining = equations.gaining();
  const auto first = std::lower_bound(gaining.begin(), gaining.end(), begin);
  for (auto at = first; at != gaining.end() && *at < end; ++at) {
    const auto k = static_cast<std::size_t>(at - gaining.begin());
    for (const TransportClass& it : equations.classes())
      for (const std::size_t system : it.systems()) state.of(system)[*at] += per_gram_[*at] * gain_[system][k];
  }
}

} // namespace reference_engine
