#include "core/mass_rates.h"

#include "core/kernels.h"
#include "core/reaction_limit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace reference_engine {

MassRates::MassRates(Equations& equations)
    : equations_(equations), count_(equations.problem().segments.size()), reacts_(equations.kinetics().reacts()),
      stoichiometry_(equations.kinetics().stoichiometry()), start_volume_(count_), start_change_(count_), bend_(count_),
      volume_(count_), per_volume_(count_), gain_(equations.gaining().size()) {
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      simulated_.push_back(system);
      class_of_.push_back(&it);
    }
  }
  find_what_runs_out();
  concentration_ = equations.problem().initial;
  rate_.assign(concentration_.size(), 0.0);
  shifted_ = concentration_;
  shifted_rate_ = rate_;
  arrivals_.resize(simulated_.size() * gain_.size());
  samples_.resize(3 * arrivals_.size());
}

JacobianShape MassRates::shape() const {
  const Network& network = equations_.network();
  JacobianShape shape{.segments = count_,
                      .class_of = {},
                      .reacts = reacts_,
                      .couples = reacts_ && equations_.kinetics().couples(),
                      .joined = network.joined(),
                      .far_terms = {network.far_terms().begin(), network.far_terms().end()},
                      .boundary = {network.boundary_segments().begin(), network.boundary_segments().end()}};
  for (const TransportClass* const it : class_of_)
    shape.class_of.push_back(static_cast<std::size_t>(it - equations_.classes().data()));
  return shape;
}

void MassRates::find_what_runs_out() {
  if (equations_.problem().negative_allowed) return;
  for (const std::size_t system : simulated_) {
    bool runs_out = false;
    for (std::size_t p = 0; p < stoichiometry_.reactions(); ++p)
      runs_out = runs_out || stoichiometry_.never_fades[p * stoichiometry_.systems + system];
    if (runs_out) runs_out_.push_back(system);
  }
}

void MassRates::start(const State& state, double* unknowns) {
  start_volume_ = volume_ = state.volume;
  std::ranges::fill(arrivals_, Arrival{});
  for (std::size_t place = 0; place < simulated_.size(); ++place)
    std::ranges::transform(state.volume, state.of(simulated_[place]), unknowns + place * count_, std::multiplies<>());
}

// Flows, loads and boundary concentrations are linear in time, so what comes in is quadratic: three samples tell all of
// it. Only a flow that turns round within the step makes the parabola an approximation, the same for all accounts.
bool MassRates::begin(const State& state, double days, Balances& balances) {
  begin_ = state.day;
  days_ = days;
  elapsed_ = 0;
  start_volume_ = state.volume;
  sample_sources(0, 0, balances);
  const bool jumped = has_jumped();
  const auto find_water = [this] {
    equations_.network().take_layers(0, count_, layers_);
    equations_.network().move_water(layers_, water_);
  };
  find_water();
  start_change_ = water_.change;
  sample_sources(1, 0.5, balances);
  sample_sources(2, 1, balances);
  find_water();
  for (std::size_t i = 0; i < count_; ++i) bend_[i] = (water_.change[i] - start_change_[i]) / (2 * days);
  const std::size_t all = arrivals_.size();
  for (std::size_t k = 0; k < all; ++k) {
    const double first = samples_[k], middle = samples_[all + k], last = samples_[2 * all + k];
    arrivals_[k].rate = {first, (4 * middle - 3 * first - last) / days,
                         2 * (first - 2 * middle + last) / (days * days)};
  }
  const ForcingLine& forcing = equations_.forcing();
  const auto keep = [](std::span<const double> from, std::vector<double>& to) { to.assign(from.begin(), from.end()); };
  keep(forcing.flows(), last_[0]);
  keep(forcing.exchanges(), last_[1]);
  keep(forcing.time_functions().values(), last_[2]);
  return jumped;
}

// Series have single precision, so a line does not end exactly where the next one begins.
bool MassRates::has_jumped() const {
  constexpr double rounding = 1e-5;
  const auto differ = [](double now, double last) {
    return std::abs(now - last) > rounding * std::max(std::abs(now), std::abs(last));
  };
  const ForcingLine& forcing = equations_.forcing();
  const std::array<std::span<const double>, 3> now = {forcing.flows(), forcing.exchanges(),
                                                      forcing.time_functions().values()};
  for (std::size_t kind = 0; kind < now.size(); ++kind)
    for (std::size_t k = 0; k < last_[kind].size(); ++k)
      if (differ(now[kind][k], last_[kind][k])) return true;
  return false;
}

void MassRates::sample_sources(std::size_t sample, double share_of_step, Balances& balances) {
  constexpr std::array<double, 3> simpson = {1.0 / 6, 4.0 / 6, 1.0 / 6};
  const double days = simpson[sample] * days_;
  equations_.move_to(begin_ + share_of_step * days_);
  const std::span<double> all = std::span(samples_).subspan(sample * arrivals_.size(), arrivals_.size());
  std::ranges::fill(all, 0.0);
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    const auto gains = all.subspan(place * gain_.size(), gain_.size());
    balances.systems[simulated_[place]].moved.add(equations_.add_sources(simulated_[place], gains), days);
  }
  balances.water.add(equations_.network().water_in(), equations_.network().water_released(), days);
}

void MassRates::finish(const double* unknowns, State& state) {
  for (Arrival& it : arrivals_) it = {.before = it.until(days_)};
  elapsed_ = 0;
  const auto gaining = equations_.gaining();
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    const std::span<double> values = state.of(simulated_[place]);
    std::copy_n(unknowns + place * count_, count_, values.begin());
    for (std::size_t k = 0; k < gaining.size(); ++k) values[gaining[k]] += arrivals_[place * gaining.size() + k].before;
    for (std::size_t i = 0; i < count_; ++i) values[i] /= state.volume[i];
  }
}

void MassRates::add_losses(const double* before, const double* after, Balances& balances) const {
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    MassFlux& moved = balances.systems[simulated_[place]].moved;
    moved.outflow += after[account(place, outflow)] - before[account(place, outflow)];
    moved.reacted += after[account(place, reacted)] - before[account(place, reacted)];
  }
}

void MassRates::take(double elapsed, const double* unknowns) {
  elapsed_ = elapsed;
  equations_.move_to(begin_ + elapsed);
  for (std::size_t i = 0; i < count_; ++i)
    volume_[i] = start_volume_[i] + elapsed * (start_change_[i] + elapsed * bend_[i]);
  set_inverse(count_, volume_.data(), per_volume_.data());
  equations_.set_volumes(volume_);
  take_coefficients();
  const auto gaining = equations_.gaining();
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    double* const values = &concentration_[simulated_[place] * count_];
    set_product(count_, 1, unknowns + place * count_, per_volume_.data(), values);
    for (std::size_t k = 0; k < gaining.size(); ++k)
      values[gaining[k]] += arrivals_[place * gaining.size() + k].until(elapsed) * per_volume_[gaining[k]];
  }
}

void MassRates::take_coefficients() {
  if (std::exchange(version_, equations_.version()) == equations_.version()) return;
  coefficients_.resize(equations_.classes().size());
  equations_.network().take_layers(0, count_, layers_);
  for (std::size_t c = 0; c < coefficients_.size(); ++c)
    equations_.find_coefficients(equations_.classes()[c], layers_, coefficients_[c]);
}

void MassRates::weigh(const double* unknowns, double relative, double absolute, double* weights) const {
  constexpr double weightless = 1e-30;
  const auto gaining = equations_.gaining();
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    double* const row = weights + place * count_;
    std::copy_n(unknowns + place * count_, count_, row);
    for (std::size_t k = 0; k < gaining.size(); ++k)
      row[gaining[k]] += arrivals_[place * gaining.size() + k].until(elapsed_);
    for (std::size_t i = 0; i < count_; ++i) row[i] = 1 / (relative * std::abs(row[i]) + absolute * volume_[i]);
  }
  std::fill(weights + simulated_.size() * count_, weights + size(), weightless);
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
  if (!runs_out_.empty()) fade_reactions(concentration, rate);
}

// A loss of order 0 would go on below 0; it fades away in traces.
void MassRates::fade_reactions(const std::vector<double>& concentration, std::vector<double>& rate) const {
  constexpr double traces = 1e-4; // g/m3: far above the error of the method, far below what is measured
  const std::size_t systems = stoichiometry_.systems;
  std::vector<double> here(systems), rates(systems), extents(stoichiometry_.reactions());
  for (std::size_t i = 0; i < count_; ++i) {
    bool fades = false;
    for (const std::size_t s : runs_out_) fades = fades || concentration[s * count_ + i] < traces;
    if (!fades) continue;
    for (std::size_t s = 0; s < systems; ++s) here[s] = concentration[s * count_ + i];
    equations_.kinetics().extents(i, here.data(), extents.data());
    fade_extents(stoichiometry_, here, traces, extents);
    add_up(stoichiometry_, extents, rates);
    for (std::size_t s = 0; s < systems; ++s) rate[s * count_ + i] = rates[s];
  }
}

void MassRates::rates(double elapsed, const double* unknowns, double* rates) {
  take(elapsed, unknowns);
  if (reacts_) find_reactions(concentration_, rate_);
  for (std::size_t place = 0; place < simulated_.size(); ++place) {
    const std::size_t system = simulated_[place];
    double* const change = rates + place * count_;
    const double* const reaction = &rate_[system * count_];
    add_transport(*class_of_[place], system, change);
    const MassFlux losses = equations_.losses(*class_of_[place], 0, count_, &concentration_[system * count_]);
    rates[account(place, outflow)] = losses.outflow;
    rates[account(place, reacted)] = losses.reacted;
    if (!reacts_) continue;
    rates[account(place, reacted)] += sum_of_products(count_, volume_.data(), reaction);
    for (std::size_t i = 0; i < count_; ++i) change[i] += volume_[i] * reaction[i];
  }
}

void MassRates::add_transport(const TransportClass& its_class, std::size_t system, double* rates) {
  const Coefficients& it = coefficients_[static_cast<std::size_t>(&its_class - equations_.classes().data())];
  const double* const lower = it.lower();
  const double* const upper = it.upper();
  const double* const now = &concentration_[system * count_];
  const std::size_t last = count_ - 1;
  rates[last] = (last > 0 ? lower[last] * now[last - 1] : 0) - it.out[last] * now[last];
  if (last > 0) rates[0] = upper[0] * now[1] - it.out[0] * now[0];
  for (std::size_t i = 1; i < last; ++i) rates[i] = lower[i] * now[i - 1] - it.out[i] * now[i] + upper[i] * now[i + 1];
  std::ranges::fill(gain_, 0.0);
  equations_.add_far_gains(its_class, now, gain_);
  for (std::size_t k = 0; k < gain_.size(); ++k) rates[equations_.gaining()[k]] += gain_[k];
}

// Reactions stay inside a segment, so shifting one system in all segments gives its column in all segments.
void MassRates::find_reaction_slopes(std::vector<double>& slopes) {
  const double relative = std::sqrt(std::numeric_limits<double>::epsilon());
  slopes.resize(simulated_.size() * simulated_.size() * count_);
  find_reactions(concentration_, rate_);
  shifted_ = concentration_;
  const auto shift = [&](double value) { return relative * std::max(std::abs(value), 1e-3); };
  for (std::size_t cause = 0; cause < simulated_.size(); ++cause) {
    const std::size_t row = simulated_[cause] * count_;
    for (std::size_t i = 0; i < count_; ++i) shifted_[row + i] += shift(concentration_[row + i]);
    find_reactions(shifted_, shifted_rate_);
    for (std::size_t effect = 0; effect < simulated_.size(); ++effect) {
      const std::size_t other = simulated_[effect] * count_;
      double* const slope = &slopes[(cause * simulated_.size() + effect) * count_];
      for (std::size_t i = 0; i < count_; ++i)
        slope[i] = (shifted_rate_[other + i] - rate_[other + i]) / (shifted_[row + i] - concentration_[row + i]);
    }
    std::copy_n(concentration_.begin() + static_cast<std::ptrdiff_t>(row), count_,
                shifted_.begin() + static_cast<std::ptrdiff_t>(row));
  }
}

void MassRates::find_outflow_slopes(const TransportClass& its_class, const Coefficients& its,
                                    Jacobian::OfClass& into) const {
  for (auto* const values : {&into.all, &into.to_next, &into.to_previous}) values->resize(count_);
  set_product(count_, 1, its.out.data(), per_volume_.data(), into.all.data());
  set_product(count_, 1, its.up.data() + 1, per_volume_.data(), into.to_next.data());
  set_product(count_, 1, its.down.data(), per_volume_.data(), into.to_previous.data());
  const auto far_terms = equations_.network().far_terms();
  into.far.clear();
  for (std::size_t k = 0; k < far_terms.size(); ++k)
    into.far.push_back(its_class.far(k) * per_volume_[far_terms[k].source]);
  const auto boundary = equations_.network().boundary_segments();
  into.boundary.clear();
  for (std::size_t r = 0; r < boundary.size(); ++r)
    into.boundary.push_back(its_class.boundary_out()[r] * per_volume_[boundary[r]]);
  const auto sink = its_class.sink();
  into.sink.resize(sink.size());
  set_product(sink.size(), 1, sink.data(), per_volume_.data(), into.sink.data());
}

void MassRates::jacobian(double elapsed, const double* unknowns, Jacobian& into) {
  take(elapsed, unknowns);
  if (reacts_) find_reaction_slopes(into.reactions);
  into.classes.resize(coefficients_.size());
  for (std::size_t c = 0; c < coefficients_.size(); ++c)
    find_outflow_slopes(equations_.classes()[c], coefficients_[c], into.classes[c]);
}

} // namespace reference_engine
