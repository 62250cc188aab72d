#include "core/runge_kutta.h"

#include <algorithm>
#include <utility>

namespace reference_engine {

namespace {

constexpr std::size_t block = 128; // segments of a tile, or of a stretch in a tile of all

// Which of three moments a stage of the classic method has.
constexpr std::array<std::size_t, 4> moment_of = {0, 1, 1, 2};

} // namespace

// Kutta's tableau (Hairer, Norsett, Wanner, Solving Ordinary Differential Equations I, 1993, table 1.2).
constexpr RungeKutta::Tableau RungeKutta::classic = {.moments = {0, 0.5, 0.5, 1},
                                                     .weights = {1.0 / 6, 1.0 / 3, 1.0 / 3, 1.0 / 6},
                                                     .reach = {0.5, 0.5, 1, 1.0 / 6},
                                                     .array = {0, 1, 2, 3},
                                                     .is_linear = false};
// Where y' = A y + b(t) with a constant A and b linear in time, the classic result for a step of h is that of these
// four stages, but for rounding: y + h A (y + h A / 2 (y + h A / 3 (y + h A / 4 y))), and b at the moments below
// (Jameson, Schmidt, Turkel, AIAA paper 81-1259, 1981). No stage but the last is needed for it.
constexpr RungeKutta::Tableau RungeKutta::linear = {.moments = {0, 1.0 / 4, 1.0 / 3, 1.0 / 2},
                                                    .weights = {0, 0, 0, 1},
                                                    .reach = {1.0 / 4, 1.0 / 3, 1.0 / 2, 1},
                                                    .array = {0, 1, 2, 1},
                                                    .is_linear = true};

StepLimit RungeKutta::limit(Equations& equations, const State& state, double days, double enough) {
  equations.move_to(state.day + days);
  equations.set_volumes(state.volume);
  StepLimit limit = equations.limit(state, enough);
  if (!equations.forcing().coefficients_vary()) return limit;
  equations.move_to(state.day); // last, as the first stage needs it
  equations.set_volumes(state.volume);
  const StepLimit at_begin = equations.limit(state, enough);
  if (at_begin.days < limit.days) limit.days = at_begin.days, limit.segment = at_begin.segment;
  if (at_begin.saturated_days < limit.saturated_days)
    limit.saturated_days = at_begin.saturated_days, limit.saturated_segment = at_begin.saturated_segment;
  return limit;
}

void RungeKutta::step(Equations& equations, State& state, double days, Balances& balances) {
  const Problem& problem = equations.problem();
  equations.move_to(state.day);
  equations.set_volumes(state.volume);
  flows_vary_ = equations.forcing().water_varies();
  // Tiles work only where nothing has to be computed again for all segments within a step.
  const bool in_tiles = equations.network().far_terms().empty() && !equations.forcing().time_functions_vary() &&
                        (!equations.uses_volumes() || (!flows_vary_ && equations.is_steady()));
  const std::size_t count = state.volume.size();
  allocate(equations, in_tiles ? std::min(count, block + 2 * stages) + 2 : count + 2);
  const Balances before = balances;
  volumes_change_ = exceeds_ = false;
  is_steady_ = in_tiles && (flows_vary_ ? equations.line_is_steady() : equations.is_steady());
  tableau_ = is_steady_ && !flows_vary_ && !equations.kinetics().reacts() ? linear : classic;
  const bool stays_above_0 =
      in_tiles ? step_in_tiles(equations, state, days, balances) : step_in_stages(equations, state, days, balances);
  if (!stays_above_0 && !problem.negative_allowed) {
    balances = before;
    return Euler::step(equations, state, days, balances);
  }
  for (std::size_t s = 0; s < problem.systems.size(); ++s)
    if (!problem.systems[s].simulated) std::ranges::copy(state.of(s), &next_[s * count]);
  state.concentration.swap(next_);
  if (volumes_change_) state.swap_volumes(next_volume_);
  state.day += days;
  for (const TransportClass& it : equations.classes())
    for (const std::size_t system : it.systems())
      if (!stays_above_0 || exceeds_) hold_limits(problem, system, 0, count, state, balances);
}

void RungeKutta::allocate(const Equations& equations, std::size_t stage_size) {
  const std::size_t systems = equations.problem().systems.size(), count = equations.problem().segments.size();
  if (next_.empty()) {
    next_.resize(systems * count);
    next_volume_.resize(count);
    for (auto& gain : gain_) gain.assign(systems, std::vector<double>(equations.gaining().size()));
    constexpr std::size_t longest = block + 2 * stages; // stretch
    for (Stretch& it : networks_) it.classes.resize(equations.classes().size());
    shares_.resize(equations.classes().size(), longest);
    for (auto* values :
         {&shares_.per_volume, &shares_.per_rate, &shares_.ratios[0], &shares_.ratios[1], &shares_.ratios[2]})
      values->resize(longest);
    rate_.resize(systems * longest);
    now_rows_.resize(systems);
    for (std::size_t s = 0; s < systems; ++s) rate_rows_.push_back(&rate_[s * longest]);
  }
  if (stage_size_ == stage_size) return;
  stage_size_ = stage_size;
  for (auto& stage : stage_) stage.assign(systems * stage_size, 0.0);
  for (auto& volume : volume_) volume.resize(stage_size - 2);
}

void RungeKutta::Shares::resize(std::size_t class_count, std::size_t size) {
  classes.resize(class_count);
  for (OfClass& it : classes)
    for (auto* values : {&it.out, &it.lower, &it.upper}) values->resize(size);
}

bool RungeKutta::step_in_tiles(Equations& equations, const State& state, double days, Balances& balances) {
  for (std::size_t k = 0; k < stages; ++k) {
    equations.move_to(state.day + tableau_.moments[k] * days);
    take_sources(equations, k, days, balances);
    if (flows_vary_) equations.keep(moments_[moment_of[k]]);
  }
  const std::size_t count = state.volume.size();
  if (tableau_.is_linear) find_all_shares(equations, state, days);
  bool stays_above_0 = true;
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count);
    const Tile tile{.begin = begin,
                    .end = end,
                    .first = begin > stages ? begin - stages : 0,
                    .last = std::min(end + stages, count)};
    const bool fine = tableau_.is_linear ? step_linear_tile(equations, tile, state, days, balances)
                                         : step_tile(equations, tile, state, days, balances);
    stays_above_0 = stays_above_0 && fine;
  }
  return stays_above_0;
}

bool RungeKutta::step_tile(Equations& equations, const Tile& tile, const State& state, double days,
                           Balances& balances) {
  const auto network_of = [&](std::size_t stage) { return flows_vary_ ? moment_of[stage] : 0; };
  const auto [begin, end] = tile.with_margin(stages - 1, state.volume.size());
  bool moves = false;
  for (std::size_t m = 0; m < (flows_vary_ ? moments_.size() : 1); ++m) {
    if (flows_vary_) equations.exchange(moments_[m]);
    take_network(equations, begin, end, networks_[m]);
    if (flows_vary_) equations.exchange(moments_[m]);
    moves = moves || !networks_[m].water.steady;
  }
  if (moves) {
    std::copy_n(&state.volume[tile.first], tile.last - tile.first, volume_[0].begin());
    for (std::size_t k = 0; k + 1 < stages; ++k)
      change_volumes(equations.problem(), state, tableau_.reach[k] * days, networks_[network_of(k)].water, begin,
                     &volume_[k + 1][begin - tile.first]);
    keep_new_volumes(tile, state);
  }
  fill_first_stage(equations, tile, state);
  const auto linked = equations.network().linked();
  const auto next_linked = std::ranges::lower_bound(linked, begin);
  const bool exchanges = flows_vary_ && next_linked != linked.end() && *next_linked < end; // else all is in the layers
  bool stays_above_0 = true;
  for (std::size_t k = 0; k < stages; ++k) {
    const std::size_t network = network_of(k);
    const auto [from, to] = tile.with_margin(stages - 1 - k, state.volume.size());
    if (exchanges) equations.exchange(moments_[network]);
    if (k == 0 || moves || network != network_of(k - 1))
      find_shares(equations, {k, tile, begin, end, moves, days, shares_}, networks_[network], state);
    const bool fine = advance_part(equations, {k, tile, from, to, moves, days, shares_}, state, balances);
    if (exchanges) equations.exchange(moments_[network]);
    stays_above_0 = stays_above_0 && fine;
  }
  return stays_above_0;
}

bool RungeKutta::step_linear_tile(Equations& equations, const Tile& tile, const State& state, double days,
                                  Balances& balances) {
  fill_first_stage(equations, tile, state);
  bool stays_above_0 = true;
  for (std::size_t k = 0; k < stages; ++k) {
    const auto [from, to] = tile.with_margin(stages - 1 - k, state.volume.size());
    const bool fine = advance_part(equations, {k, tile, from, to, false, days, all_shares_}, state, balances);
    stays_above_0 = stays_above_0 && fine;
  }
  return stays_above_0;
}

bool RungeKutta::step_in_stages(Equations& equations, const State& state, double days, Balances& balances) {
  const std::size_t count = state.volume.size();
  const Tile all{.begin = 0, .end = count, .first = 0, .last = count};
  fill_first_stage(equations, all, state);
  for (auto& volume : volume_) volume = state.volume;
  part_moves_.assign(count / block + 1, false);
  bool stays_above_0 = true;
  for (std::size_t k = 0; k < stages; ++k) {
    equations.move_to(state.day + tableau_.moments[k] * days);
    equations.set_volumes(volume_[k]);
    take_sources(equations, k, days, balances);
    for (const TransportClass& it : equations.classes())
      for (const std::size_t system : it.systems())
        equations.add_far_gains(it, values(k, system) + all.at(0), gain_[k][system]);
    for (std::size_t begin = 0; begin < count; begin += block) {
      const std::size_t end = std::min(begin + block, count);
      Stretch& network = networks_[0];
      take_network(equations, begin, end, network);
      if (k + 1 < stages && !network.water.steady) {
        change_volumes(equations.problem(), state, tableau_.reach[k] * days, network.water, begin,
                       &volume_[k + 1][begin]);
        part_moves_[begin / block] = true;
      }
      const Part part{k, all, begin, end, part_moves_[begin / block], days, shares_};
      find_shares(equations, part, network, state);
      const bool fine = advance_part(equations, part, state, balances);
      stays_above_0 = stays_above_0 && fine;
    }
  }
  if (std::ranges::find(part_moves_, true) != part_moves_.end()) keep_new_volumes(all, state);
  return stays_above_0;
}

void RungeKutta::fill_first_stage(const Equations& equations, const Tile& tile, const State& state) {
  if (tile.first > 0 && tile.last < state.volume.size()) return; // see stage_values
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      std::copy_n(&state.of(system)[tile.first], tile.last - tile.first, values(0, system) + 1);
      for (std::size_t k = 0; k < stages; ++k) // beyond the ends of the model; nothing comes from there
        values(k, system)[0] = values(k, system)[tile.last - tile.first + 1] = 0;
    }
  }
}

void RungeKutta::keep_new_volumes(const Tile& tile, const State& state) {
  if (!std::exchange(volumes_change_, true)) next_volume_ = state.volume;
  const double* const volume = &volume_[stages - 1][tile.begin - tile.first];
  std::copy_n(volume, tile.end - tile.begin, &next_volume_[tile.begin]);
}

void RungeKutta::take_sources(const Equations& equations, std::size_t stage, double days, Balances& balances) {
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      std::ranges::fill(gain_[stage][system], 0.0);
      balances.systems[system].moved.add(equations.add_sources(system, gain_[stage][system]),
                                         tableau_.weights[stage] * days);
    }
  }
  balances.water.add(equations.network().water_in(), equations.network().water_released(),
                     tableau_.weights[stage] * days);
}

void RungeKutta::take_network(const Equations& equations, std::size_t begin, std::size_t end, Stretch& into) const {
  equations.network().take_layers(begin, end, into.layers);
  into.water.steady = true;
  if (!is_steady_) equations.network().move_water(into.layers, into.water);
  for (std::size_t c = 0; c < into.classes.size(); ++c)
    equations.find_carried(equations.classes()[c], into.layers, into.classes[c]);
}

// With masses M = V C and the rates F of the stages, the next stage has M0 + reach F, and the result is
// M0 + (F0 + 2 F1 + 2 F2 + F3) / 6 = (-M0 + M1 + 2 M2 + M3) / 3 + F3 / 6. The last stage has the volumes of the end.
void RungeKutta::find_shares(const Equations& equations, const Part& part, const Stretch& network, const State& state) {
  const std::size_t count = part.end - part.begin, offset = part.begin - part.tile.first;
  const bool is_last = part.stage + 1 == stages;
  const double* per_volume = &state.per_volume[part.begin];
  if (part.volumes_change) {
    set_inverse(count, &volume_[is_last ? part.stage : part.stage + 1][offset], shares_.per_volume.data());
    per_volume = shares_.per_volume.data();
    for (std::size_t k = 0; k < (is_last ? shares_.ratios.size() : 1); ++k)
      set_product(count, 1, &volume_[k][offset], per_volume, shares_.ratios[k].data());
    set_product(count, part.days, &volume_[part.stage][offset], per_volume, shares_.per_rate.data());
  }
  shares_.next_per_volume = per_volume;
  shares_.begin = part.begin;
  find_class_shares(equations, part.begin, part.end, part.days, per_volume, network, shares_, 0);
}

void RungeKutta::find_class_shares(const Equations& equations, std::size_t begin, std::size_t end, double days,
                                   const double* per_volume, const Stretch& network, Shares& into,
                                   std::size_t at) const {
  for (std::size_t c = 0; c < into.classes.size(); ++c) {
    Shares::OfClass& it = into.classes[c];
    const Coefficients& its = network.classes[c];
    set_left_shares(end - begin, days, per_volume, its.up.data(), its.down.data(),
                    {&it.out[at], &it.lower[at], &it.upper[at]});
    equations.classes()[c].visit_leaving(equations.network(), begin, end, [&](std::size_t segment, double amount) {
      it.out[at + segment - begin] += days * per_volume[segment - begin] * amount;
    });
  }
}

void RungeKutta::find_all_shares(const Equations& equations, const State& state, double days) {
  all_shares_.next_per_volume = state.per_volume.data();
  if (version_ == equations.version() && volume_version_ == state.volume_version && days_ == days) return;
  version_ = equations.version();
  volume_version_ = state.volume_version;
  days_ = days;
  const std::size_t count = state.volume.size();
  all_shares_.resize(equations.classes().size(), count);
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count);
    take_network(equations, begin, end, networks_[0]);
    find_class_shares(equations, begin, end, days, &state.per_volume[begin], networks_[0], all_shares_, begin);
  }
}

bool RungeKutta::advance_part(Equations& equations, const Part& part, const State& state, Balances& balances) {
  const bool reacts = equations.kinetics().reacts();
  for (std::size_t s = 0; reacts && s < rate_rows_.size(); ++s) {
    const bool simulated = equations.problem().systems[s].simulated;
    now_rows_[s] =
        simulated ? stage_values(part.stage, s, part.tile, state) + part.tile.at(part.begin) : &state.of(s)[part.begin];
  }
  if (reacts) equations.kinetics().rates(part.begin, part.end, now_rows_.data(), rate_rows_.data());
  bool below_0 = false;
  for (std::size_t c = 0; c < part.shares.classes.size(); ++c)
    below_0 = advance_class(equations, c, part, state) || below_0;
  add_to_balances(equations, part, state, balances);
  return !below_0;
}

// A tile within the model needs no copy of what it starts from.
const double* RungeKutta::stage_values(std::size_t stage, std::size_t system, const Tile& tile,
                                       const State& state) const {
  if (stage == 0 && tile.first > 0 && tile.last < state.volume.size()) return &state.of(system)[tile.first - 1];
  return &stage_[tableau_.array[stage]][system * stage_size_];
}

bool RungeKutta::advance_class(const Equations& equations, std::size_t which, const Part& part, const State& state) {
  const TransportClass& its_class = equations.classes()[which];
  const std::size_t stage = part.stage, begin = part.begin, end = part.end;
  const std::size_t at = part.tile.at(begin), model_size = next_volume_.size(), offset = begin - part.shares.begin;
  const bool last = stage + 1 == stages;
  const auto next_of = [&](std::size_t system) {
    return last ? &next_[system * model_size + begin] : values(stage + 1, system) + at;
  };
  const Problem& problem = equations.problem();
  rows_.clear();
  for (const std::size_t system : its_class.systems())
    rows_.push_back(
        {.now = stage_values(stage, system, part.tile, state) + at,
         .earlier = {stage_values(0, system, part.tile, state) + at, values(1, system) + at, values(2, system) + at},
         .rate = rate_rows_[system],
         .next = next_of(system),
         .most = limits(problem, system).most});
  const Shares::OfClass& it = part.shares.classes[which];
  const auto from = [offset](const std::vector<double>& values) {
    return values.empty() ? nullptr : values.data() + offset;
  };
  const StageShares shares{
      .out = from(it.out),
      .lower = from(it.lower),
      .upper = from(it.upper),
      .ratios = {from(part.shares.ratios[0]), from(part.shares.ratios[1]), from(part.shares.ratios[2])},
      .per_rate = from(part.shares.per_rate),
      .days = part.days,
      .reach = tableau_.reach[stage]};
  const StageResult result = !last ? StageResult::stage : tableau_.is_linear ? StageResult::end : StageResult::sum;
  bool beyond = advance_stage(end - begin, shares, rows_, result, equations.kinetics().reacts(), part.volumes_change);
  const auto gaining = equations.gaining();
  for (auto k = static_cast<std::size_t>(std::ranges::lower_bound(gaining, begin) - gaining.begin());
       k < gaining.size() && gaining[k] < end; ++k) {
    const double per_gram =
        tableau_.reach[stage] * part.days * part.shares.next_per_volume[gaining[k] - part.shares.begin];
    for (std::size_t r = 0; r < rows_.size(); ++r) {
      double& value = rows_[r].next[gaining[k] - begin];
      value += per_gram * gain_[stage][its_class.systems()[r]][k];
      beyond = beyond || !(value >= 0 && value <= rows_[r].most);
    }
  }
  if (!last || !beyond) return false;
  // What gains make up for is not below 0.
  exceeds_ = exceeds_ || std::ranges::any_of(
                             rows_, [&](const StageRow& row) { return any_above(end - begin, row.next, row.most); });
  return std::ranges::any_of(rows_, [&](const StageRow& row) { return !all_at_least_0(end - begin, row.next); });
}

// What the segments that the tile finishes lost and reacted by this stage.
void RungeKutta::add_to_balances(const Equations& equations, const Part& part, const State& state, Balances& balances) {
  if (tableau_.weights[part.stage] == 0) return;
  const Tile& tile = part.tile;
  const std::size_t from = std::max(part.begin, tile.begin), to = std::min(part.end, tile.end);
  const double days = tableau_.weights[part.stage] * part.days;
  const double* const volume = part.volumes_change ? &volume_[part.stage][from - tile.first] : &state.volume[from];
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      MassFlux& moved = balances.systems[system].moved;
      moved.add(equations.losses(it, from, to, stage_values(part.stage, system, tile, state) + tile.at(from)), days);
      if (!equations.kinetics().reacts()) continue;
      moved.reacted += days * sum_of_products(to - from, volume, rate_rows_[system] + (from - part.begin));
    }
  }
}

} // namespace reference_engine
