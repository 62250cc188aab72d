#include "core/mass_rates.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace reference_engine {

MassRates::MassRates(const Equations& equations)
    : equations_(equations), count_(equations.problem().segments.size()), reacts_(equations.kinetics().reacts()),
      accounted_(false), start_volume_(count_), volume_(count_), gain_(equations.gaining().size()) {
  const Problem& problem = equations.problem();
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      simulated_.push_back(system);
      class_of_.push_back(&it);
      accounted_ = accounted_ || static_cast<int>(system) == problem.balance_system;
    }
  }
  concentration_ = problem.initial;
  rate_.assign(concentration_.size(), 0.0);
  shifted_ = concentration_;
  shifted_rate_ = rate_;
  slope_.assign(reacts_ ? simulated_.size() * simulated_.size() * count_ : 0, 0.0);

  const auto terms = equations.network().far_terms();
  far_starts_.assign(count_ + 1, 0);
  for (const FarTerm& term : terms) ++far_starts_[term.source + 1];
  for (std::size_t i = 0; i < count_; ++i) far_starts_[i + 1] += far_starts_[i];
  far_terms_.resize(terms.size());
  std::vector<std::size_t> next = far_starts_;
  for (std::size_t k = 0; k < terms.size(); ++k) far_terms_[next[terms[k].source]++] = k;
  const auto rim = equations.network().rim();
  rim_of_.assign(count_, rim.size());
  for (std::size_t r = 0; r < rim.size(); ++r) rim_of_[rim[r]] = r;

  for (std::size_t place = 0; place < simulated_.size(); ++place)
    for (std::size_t i = 0; i < count_; ++i)
      add_column(*class_of_[place], place, i, [this](std::size_t, double) { ++nonzeros_; });
  nonzeros_ += accounted_ ? accounts : 0;
}

void MassRates::begin(const State& state) {
  start_volume_ = state.volume;
  volume_ = state.volume;
}

void MassRates::masses(const State& state, double* masses) const {
  for (std::size_t place = 0; place < simulated_.size(); ++place)
    std::ranges::transform(state.volume, state.of(simulated_[place]), masses + place * count_, std::multiplies<>());
}

void MassRates::concentrations(const double* masses, State& state) const {
  for (std::size_t place = 0; place < simulated_.size(); ++place)
    std::transform(masses + place * count_, masses + (place + 1) * count_, state.volume.begin(),
                   state.of(simulated_[place]).begin(), std::divides<>());
}

MassFlux MassRates::account(const double* masses) const {
  if (!accounted_) return {};
  const double* const account = masses + simulated_.size() * count_;
  return {.inflow = account[inflow], .outflow = account[outflow], .loads = account[loads], .reacted = account[reacted]};
}

void MassRates::take(double elapsed, const double* masses) {
  const auto change = equations_.network().volume_change();
  for (std::size_t i = 0; i < count_; ++i) volume_[i] = start_volume_[i] + elapsed * change[i];
  for (std::size_t place = 0; place < simulated_.size(); ++place)
    for (std::size_t i = 0; i < count_; ++i)
      concentration_[simulated_[place] * count_ + i] = masses[place * count_ + i] / volume_[i];
}

void MassRates::find_reactions(const std::vector<double>& concentration, std::vector<double>& rate) const {
  constexpr std::size_t most = 64; // systems of any model
  const double* from[most];
  double* to[most];
  for (std::size_t s = 0; s * count_ < concentration.size(); ++s) {
    from[s] = &concentration[s * count_];
    to[s] = &rate[s * count_];
  }
  equations_.kinetics().rates(0, count_, from, to);
}

void MassRates::rates(double elapsed, const double* masses, double* rates) {
  take(elapsed, masses);
  if (reacts_) find_reactions(concentration_, rate_);
  double* const account = rates + simulated_.size() * count_;
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    const std::size_t system = simulated_[place];
    double* const change = rates + place * count_;
    const double* const reaction = &rate_[system * count_];
    add_transport(*class_of_[place], system, change);
    if (reacts_)
      for (std::size_t i = 0; i < count_; ++i) change[i] += volume_[i] * reaction[i];
    if (static_cast<int>(system) != equations_.problem().balance_system) continue;
    const MassFlux flux = equations_.flux(*class_of_[place], system, &concentration_[system * count_]);
    account[inflow] = flux.inflow;
    account[outflow] = flux.outflow;
    account[loads] = flux.loads;
    account[reacted] = flux.reacted;
    for (std::size_t i = 0; reacts_ && i < count_; ++i) account[reacted] += volume_[i] * reaction[i];
  }
}

void MassRates::add_transport(const TransportClass& its_class, std::size_t system, double* rates) {
  const CoefficientLayout& layout = equations_.network().layout();
  const auto coefficients = its_class.coefficients();
  const double* const now = &concentration_[system * count_];
  for (std::size_t i = 0; i < count_; ++i) {
    rates[i] = -coefficients[layout.out(i)] * now[i];
    if (i > 0) rates[i] += coefficients[layout.lower(i)] * now[i - 1];
    if (i + 1 < count_) rates[i] += coefficients[layout.upper(i)] * now[i + 1];
  }
  equations_.gains(its_class, system, now, gain_);
  for (std::size_t k = 0; k < gain_.size(); ++k) rates[equations_.gaining()[k]] += gain_[k];
}

// Reactions stay inside a segment, so one shift of a system in all segments tells its column of all segments.
void MassRates::find_reaction_slopes() {
  const double relative = std::sqrt(std::numeric_limits<double>::epsilon());
  find_reactions(concentration_, rate_);
  shifted_ = concentration_;
  const auto shift = [&](double value) { return relative * std::max(std::abs(value), 1e-3); };
  for (std::size_t cause = 0; cause < simulated_.size(); ++cause) {
    const std::size_t row = simulated_[cause] * count_;
    for (std::size_t i = 0; i < count_; ++i) shifted_[row + i] += shift(concentration_[row + i]);
    find_reactions(shifted_, shifted_rate_);
    for (std::size_t effect = 0; effect < simulated_.size(); ++effect) {
      const std::size_t other = simulated_[effect] * count_;
      double* const slope = &slope_[(cause * simulated_.size() + effect) * count_];
      for (std::size_t i = 0; i < count_; ++i)
        slope[i] = (shifted_rate_[other + i] - rate_[other + i]) / (shifted_[row + i] - concentration_[row + i]);
    }
    std::copy_n(concentration_.begin() + static_cast<std::ptrdiff_t>(row), count_,
                shifted_.begin() + static_cast<std::ptrdiff_t>(row));
  }
}

// The column of one system's mass in one segment: always the same rows, whether or not the values are 0.
template <class Entry>
void MassRates::add_column(const TransportClass& its_class, std::size_t place, std::size_t segment, Entry entry) const {
  const CoefficientLayout& layout = equations_.network().layout();
  const auto coefficients = its_class.coefficients();
  const auto of = [&](std::size_t at) { return coefficients.empty() ? 0.0 : coefficients[at] / volume_[segment]; };
  const std::size_t first = place * count_, systems = simulated_.size();
  const auto slope = [&](std::size_t effect) {
    return slope_.empty() ? 0.0 : slope_[(place * systems + effect) * count_ + segment];
  };
  entry(first + segment, slope(place) - of(layout.out(segment)));
  for (std::size_t effect = 0; reacts_ && effect < systems; ++effect)
    if (effect != place) entry(effect * count_ + segment, slope(effect));
  if (segment > 0) entry(first + segment - 1, of(layout.upper(segment - 1)));
  if (segment + 1 < count_) entry(first + segment + 1, of(layout.lower(segment + 1)));
  for (std::size_t k = far_starts_[segment]; k < far_starts_[segment + 1]; ++k)
    entry(first + equations_.network().far_terms()[far_terms_[k]].target, of(layout.far(far_terms_[k])));
  if (!accounted_) return;
  const auto kept = static_cast<std::size_t>(equations_.problem().balance_system);
  const auto effect = static_cast<std::size_t>(std::ranges::find(simulated_, kept) - simulated_.begin());
  const auto sink = its_class.sink();
  const double settled = effect == place && !sink.empty() ? sink[segment] / volume_[segment] : 0.0;
  entry(systems * count_ + reacted, slope(effect) - settled);
  if (effect == place && rim_of_[segment] < layout.rim)
    entry(systems * count_ + outflow, of(layout.rim_out(rim_of_[segment])));
}

void MassRates::jacobian(double elapsed, const double* masses, Columns& into) {
  take(elapsed, masses);
  if (reacts_) find_reaction_slopes();
  std::int64_t next = 0;
  const auto entry = [&](std::size_t row, double value) {
    into.rows[next] = static_cast<std::int64_t>(row);
    into.values[next++] = value;
  };
  const std::size_t columns = simulated_.size() * count_;
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    for (std::size_t i = 0; i < count_; ++i) {
      into.starts[place * count_ + i] = next;
      add_column(*class_of_[place], place, i, entry);
    }
  }
  for (std::size_t k = columns; k < size(); ++k) { // nothing depends on the account
    into.starts[k] = next;
    entry(k, 0);
  }
  into.starts[size()] = next;
}

} // namespace reference_engine
