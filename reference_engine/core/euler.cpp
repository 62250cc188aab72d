#include "core/euler.h"

#include "core/reaction_limit.h"

#include <algorithm>
#include <limits>

namespace reference_engine {

namespace {

// Segments of one block: coefficients and rates stay in the second-level cache while all systems are replaced.
constexpr std::size_t block = 512;

} // namespace

StepLimit Euler::limit(Equations& equations, const State& state, double days, double enough) {
  equations.move_to(state.day + days / 2);
  equations.set_volumes(state.volume);
  return equations.limit(state, enough);
}

void Euler::step(Equations& equations, State& state, double days, Balances& balances) {
  equations.move_to_middle(state.day, days);
  equations.set_volumes(state.volume);
  allocate(equations, state);
  const bool serves = choose_shares(equations, state, days);
  gather(equations, state, balances);
  const bool reacts = equations.kinetics().reacts();
  const bool limits_reactions = reacts && !equations.problem().negative_allowed;
  const std::size_t count = state.volume.size();
  bool volumes_change = false;
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count), at = kept_ ? begin : 0;
    Shares& shares = kept_ ? all_ : block_;
    const bool moves = !serves && find_shares(equations, state, begin, end, shares, at);
    for (std::size_t s = 0; reacts && s < old_rows_.size(); ++s) {
      old_rows_[s] = state.of(s).data() + begin;
      // What limited reactions are computed from.
      if (limits_reactions) std::copy_n(old_rows_[s], end - begin, &old_[s * block]);
    }
    if (reacts) equations.kinetics().rates(begin, end, old_rows_.data(), rate_rows_.data());
    const double* const per_volume = moves ? &shares.per_volume[at] : &state.per_volume[begin];
    bool beyond = false;
    for (std::size_t c = 0; c < equations.classes().size(); ++c)
      beyond = advance_class(equations, c, begin, end, reacts, shares, at, per_volume, state) || beyond;
    if (beyond && limits_reactions) limit_reactions(equations, begin, end, &shares.per_rate[at], state);
    for (const TransportClass& it : equations.classes())
      for (const std::size_t system : it.systems())
        if (reacts) balances.systems[system].moved.reacted += days * reacted(system, begin, end, state);
    if (moves) {
      std::copy_n(&shares.new_volume[at], end - begin, &state.volume[begin]);
      std::copy_n(&shares.per_volume[at], end - begin, &state.per_volume[begin]);
    }
    for (const TransportClass& it : equations.classes())
      for (const std::size_t system : it.systems())
        if (beyond) hold_limits(equations.problem(), system, begin, end, state, balances);
    volumes_change = volumes_change || moves;
  }
  if (volumes_change) ++state.volume_version;
  state.day += days;
}

void Euler::Shares::resize(std::size_t class_count, std::size_t size) {
  classes.resize(class_count);
  for (OfClass& it : classes)
    for (auto* part : {&it.keep, &it.lower, &it.upper}) part->resize(size);
  for (auto* part : {&new_volume, &per_volume, &per_rate}) part->resize(size);
}

void Euler::allocate(const Equations& equations, const State& state) {
  if (!ratio_.empty()) return;
  const std::size_t systems = equations.problem().systems.size(), size = std::min(block, state.volume.size());
  ratio_.resize(size);
  block_.resize(equations.classes().size(), size);
  gain_.assign(systems, std::vector<double>(equations.gaining().size()));
  before_.resize(systems);
  old_rows_.resize(systems);
  old_.resize(systems * block);
  stoichiometry_ = equations.kinetics().stoichiometry();
  rate_.assign(systems * block, 0.0);
  for (std::size_t s = 0; s < systems; ++s) rate_rows_.push_back(&rate_[s * block]);
}

// Shares change with flows, volumes and the step. Those of a step like the one before are kept for the whole model, to
// serve the next ones; else they are worked out block by block in the first-level cache, since writing them to memory
// costs more than working them out.
bool Euler::choose_shares(const Equations& equations, const State& state, double days) {
  const bool as_before = version_ == equations.version() && days_ == days && volume_version_ == state.volume_version;
  version_ = equations.version();
  volume_version_ = state.volume_version;
  days_ = days;
  const bool serves = as_before && kept_;
  kept_ = as_before;
  if (kept_ && all_.classes.empty()) all_.resize(equations.classes().size(), state.volume.size());
  return serves;
}

bool Euler::find_shares(const Equations& equations, const State& state, std::size_t begin, std::size_t end,
                        Shares& into, std::size_t at) {
  const std::size_t count = end - begin;
  double* const new_volume = &into.new_volume[at];
  equations.network().take_layers(begin, end, layers_);
  const bool moves = !equations.line_is_steady() && find_new_volumes(equations, state, days_, layers_, new_volume);
  if (moves) {
    set_inverse(count, new_volume, &into.per_volume[at]);
    set_product(count, 1, &state.volume[begin], &into.per_volume[at], ratio_.data());
  }
  const double* const per_volume = moves ? &into.per_volume[at] : &state.per_volume[begin];
  if (moves)
    set_multiple(count, days_, ratio_.data(), &into.per_rate[at]);
  else if (equations.kinetics().reacts())
    set_all(count, days_, &into.per_rate[at]);
  for (std::size_t c = 0; c < into.classes.size(); ++c) {
    const TransportClass& its_class = equations.classes()[c];
    Shares::OfClass& it = into.classes[c];
    equations.find_carried(its_class, layers_, coefficients_);
    set_kept_shares(count, days_, moves ? ratio_.data() : nullptr, per_volume, coefficients_.up.data(),
                    coefficients_.down.data(), {&it.keep[at], &it.lower[at], &it.upper[at]});
    its_class.visit_leaving(equations.network(), begin, end, [&](std::size_t segment, double amount) {
      it.keep[at + segment - begin] -= days_ * per_volume[segment - begin] * amount;
    });
  }
  return moves;
}

// Whatever needs old concentrations of other blocks is taken before the first block is replaced.
void Euler::gather(const Equations& equations, const State& state, Balances& balances) {
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      std::ranges::fill(gain_[system], 0.0);
      equations.add_far_gains(it, state.of(system).data(), gain_[system]);
      MassFlux& moved = balances.systems[system].moved;
      moved.add(equations.add_sources(system, gain_[system]), days_);
      moved.add(equations.losses(it, 0, state.volume.size(), state.of(system).data()), days_);
    }
  }
  balances.water.add(equations.network().water_in(), equations.network().water_released(), days_);
}

bool Euler::advance_class(const Equations& equations, std::size_t its_class, std::size_t begin, std::size_t end,
                          bool reacts, const Shares& shares, std::size_t at, const double* per_volume, State& state) {
  const Problem& problem = equations.problem();
  const auto systems = equations.classes()[its_class].systems();
  const Shares::OfClass& it = shares.classes[its_class];
  const AdvanceShares row_shares{.keep = &it.keep[at],
                                 .lower = &it.lower[at],
                                 .upper = &it.upper[at],
                                 .per_rate = &shares.per_rate[at],
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
  bool beyond = advance(end - begin, row_shares, rows_, reacts);
  for (std::size_t r = 0; r < systems.size(); ++r) {
    before_[systems[r]] = rows_[r].before;
    beyond = add_gains(equations, systems[r], begin, end, per_volume, state) || beyond;
  }
  return beyond;
}

double Euler::reacted(std::size_t system, std::size_t begin, std::size_t end, const State& state) const {
  return sum_of_products(end - begin, &state.volume[begin], rate_rows_[system]);
}

// Where a concentration has fallen below 0, the reactions of that segment take less, and the rates with them.
void Euler::limit_reactions(const Equations& equations, std::size_t begin, std::size_t end, const double* per_rate,
                            State& state) {
  const std::size_t systems = stoichiometry_.systems;
  std::vector<double> old(systems), amounts(systems), rates(systems), extents(stoichiometry_.reactions());
  for (std::size_t i = begin; i < end; ++i) {
    bool is_short = false;
    for (std::size_t s = 0; s < systems; ++s) {
      const bool simulated = equations.problem().systems[s].simulated;
      const double rate = rate_rows_[s][i - begin];
      old[s] = old_[s * block + i - begin];
      amounts[s] = simulated ? state.of(s)[i] - per_rate[i - begin] * rate : std::numeric_limits<double>::infinity();
      is_short = is_short || (simulated && state.of(s)[i] < 0 && rate < 0);
    }
    if (!is_short) continue;
    equations.kinetics().extents(i, old.data(), extents.data());
    for (double& extent : extents) extent *= per_rate[i - begin];
    limit_extents(stoichiometry_, amounts, extents);
    add_up(stoichiometry_, extents, rates);
    for (std::size_t s = 0; s < systems; ++s) {
      if (!equations.problem().systems[s].simulated) continue;
      state.of(s)[i] = amounts[s] + rates[s];
      rate_rows_[s][i - begin] = rates[s] / per_rate[i - begin];
    }
    note_limited(i, state.day);
  }
}

bool Euler::add_gains(const Equations& equations, std::size_t system, std::size_t begin, std::size_t end,
                      const double* per_volume, State& state) const {
  const Limits limit = limits(equations.problem(), system);
  const auto gaining = equations.gaining();
  const std::span<double> values = state.of(system);
  bool outside_limits = false;
  for (auto at = std::lower_bound(gaining.begin(), gaining.end(), begin); at != gaining.end() && *at < end; ++at) {
    double& value = values[*at];
    value += days_ * per_volume[*at - begin] * gain_[system][static_cast<std::size_t>(at - gaining.begin())];
    outside_limits = outside_limits || !(value >= limit.least && value <= limit.most);
  }
  return outside_limits;
}

} // namespace reference_engine
