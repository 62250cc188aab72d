#include "core/runge_kutta.h"

#include <algorithm>

namespace reference_engine {

namespace {

constexpr std::size_t block = 256; // segments of a tile, or of a stretch in a tile of all

// Kutta's tableau (Hairer, Norsett, Wanner, Solving Ordinary Differential Equations I, 1993, table 1.2): the moment of
// each stage and its weight in the result, as shares of the step.
constexpr std::array<double, 4> moments = {0, 0.5, 0.5, 1}, weights = {1.0 / 6, 1.0 / 3, 1.0 / 3, 1.0 / 6};
// How far a stage's rates carry: to the next stage, or with their weight to the result.
constexpr std::array<double, 4> reach = {0.5, 0.5, 1, 1.0 / 6};

} // namespace

StepLimit RungeKutta::limit(Equations& equations, const State& state, double days) {
  equations.move_to(state.day + days);
  equations.set_volumes(state.volume);
  StepLimit limit = equations.limit(state);
  if (!equations.forcing().coefficients_vary()) return limit;
  equations.move_to(state.day); // last, as the first stage needs it
  equations.set_volumes(state.volume);
  const StepLimit at_begin = equations.limit(state);
  if (at_begin.days < limit.days) limit.days = at_begin.days, limit.segment = at_begin.segment;
  if (at_begin.saturated_days < limit.saturated_days)
    limit.saturated_days = at_begin.saturated_days, limit.saturated_segment = at_begin.saturated_segment;
  return limit;
}

void RungeKutta::step(Equations& equations, State& state, double days, Balances& balances) {
  const Problem& problem = equations.problem();
  equations.move_to(state.day);
  equations.set_volumes(state.volume);
  const bool in_tiles = equations.network().far_terms().empty() && !equations.forcing().coefficients_vary() &&
                        (!equations.uses_volumes() || equations.is_steady());
  const std::size_t count = state.volume.size();
  allocate(equations, in_tiles ? std::min(count, block + 2 * stages) + 2 : count + 2);
  const Balances before = balances;
  volumes_change_ = exceeds_ = false;
  is_steady_ = in_tiles && equations.is_steady();
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
    stretch_.classes.resize(equations.classes().size());
    for (auto* values : {&stretch_.per_gram, &stretch_.per_volume}) values->resize(longest);
    for (Weights& it : weights_)
      for (auto* values : {&it.keep, &it.per_rate, &it.earlier[0], &it.earlier[1], &it.earlier[2]})
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

bool RungeKutta::step_in_tiles(Equations& equations, const State& state, double days, Balances& balances) {
  for (std::size_t k = 0; k < stages; ++k) {
    equations.move_to(state.day + moments[k] * days);
    take_sources(equations, k, days, balances);
  }
  if (is_steady_)
    for (std::size_t k = 0; k < stages; ++k)
      find_weights(k, days, [](auto& values, double share, std::size_t) { std::ranges::fill(values, share); });
  const std::size_t count = state.volume.size();
  bool stays_above_0 = true;
  for (std::size_t begin = 0; begin < count; begin += block) {
    const std::size_t end = std::min(begin + block, count);
    const auto below = [&](std::size_t margin) { return begin > margin ? begin - margin : 0; };
    const auto above = [&](std::size_t margin) { return std::min(end + margin, count); };
    const Tile tile{.begin = begin, .end = end, .first = below(stages), .last = above(stages)};
    begin_tile(equations, tile, state);
    take_coefficients(equations, below(stages - 1), above(stages - 1));
    for (std::size_t k = 0; k < stages; ++k) {
      const std::size_t margin = stages - 1 - k;
      const bool fine =
          advance_stretch(equations, k, tile, below(margin), above(margin), below(stages - 1), state, days, balances);
      stays_above_0 = stays_above_0 && fine;
    }
    end_tile(tile);
  }
  return stays_above_0;
}

bool RungeKutta::step_in_stages(Equations& equations, const State& state, double days, Balances& balances) {
  const std::size_t count = state.volume.size();
  const Tile all{.begin = 0, .end = count, .first = 0, .last = count};
  begin_tile(equations, all, state);
  bool stays_above_0 = true;
  for (std::size_t k = 0; k < stages; ++k) {
    equations.move_to(state.day + moments[k] * days);
    equations.set_volumes(volume_[k]);
    take_sources(equations, k, days, balances);
    for (const TransportClass& it : equations.classes())
      for (const std::size_t system : it.systems())
        equations.add_far_gains(it, values(k, system) + all.at(0), gain_[k][system]);
    for (std::size_t begin = 0; begin < count; begin += block) {
      const std::size_t end = std::min(begin + block, count);
      take_coefficients(equations, begin, end);
      const bool fine = advance_stretch(equations, k, all, begin, end, begin, state, days, balances);
      stays_above_0 = stays_above_0 && fine;
    }
  }
  end_tile(all);
  return stays_above_0;
}

void RungeKutta::begin_tile(const Equations& equations, const Tile& tile, const State& state) {
  if (!is_steady_) std::copy_n(&state.volume[tile.first], tile.last - tile.first, volume_[0].begin());
  if (tile.first > 0 && tile.last < state.volume.size()) return;
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      std::copy_n(&state.of(system)[tile.first], tile.last - tile.first, values(0, system) + 1);
      for (std::size_t k = 0; k < stages; ++k) // beyond the ends of the model; nothing comes from there
        values(k, system)[0] = values(k, system)[tile.last - tile.first + 1] = 0;
    }
  }
}

void RungeKutta::end_tile(const Tile& tile) {
  if (is_steady_) return;
  const double* const volume = &volume_[stages - 1][tile.begin - tile.first];
  std::copy_n(volume, tile.end - tile.begin, &next_volume_[tile.begin]);
}

void RungeKutta::take_sources(const Equations& equations, std::size_t stage, double days, Balances& balances) {
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      std::ranges::fill(gain_[stage][system], 0.0);
      balances.systems[system].moved.add(equations.add_sources(system, gain_[stage][system]), weights[stage] * days);
    }
  }
  balances.water.add(equations.network().water_in(), equations.network().water_released(), weights[stage] * days);
}

void RungeKutta::take_coefficients(const Equations& equations, std::size_t begin, std::size_t end) {
  equations.network().take_layers(begin, end, stretch_.layers);
  for (std::size_t c = 0; c < stretch_.classes.size(); ++c)
    equations.find_coefficients(equations.classes()[c], stretch_.layers, stretch_.classes[c]);
}

bool RungeKutta::advance_stretch(Equations& equations, std::size_t stage, const Tile& tile, std::size_t begin,
                                 std::size_t end, std::size_t origin, const State& state, double days,
                                 Balances& balances) {
  const std::size_t count = end - begin, offset = begin - tile.first, systems = rate_rows_.size();
  if (!is_steady_ && stage + 1 < stages) {
    double* const next_volume = &volume_[stage + 1][offset];
    if (begin != stretch_.layers.begin || end != stretch_.layers.end)
      equations.network().take_layers(begin, end, stretch_.layers);
    if (find_new_volumes(equations, state, reach[stage] * days, stretch_.layers, next_volume))
      volumes_change_ = true;
    else
      std::copy_n(&state.volume[begin], count, next_volume);
  }
  if (!is_steady_) { // the last stage has the volumes of the end
    double* const per_volume = stretch_.per_volume.data();
    set_inverse(count, &volume_[std::min(stage + 1, stages - 1)][offset], per_volume);
    find_weights(stage, days, [&](auto& values, double share, std::size_t of) {
      set_product(count, share, &volume_[of][offset], per_volume, values.data());
    });
  }
  const double* const per_volume = is_steady_ ? &state.per_volume[begin] : stretch_.per_volume.data();
  set_multiple(count, reach[stage] * days, per_volume, stretch_.per_gram.data());
  const bool reacts = equations.kinetics().reacts();
  for (std::size_t s = 0; reacts && s < systems; ++s) {
    const bool simulated = equations.problem().systems[s].simulated;
    now_rows_[s] = simulated ? stage_values(stage, s, tile, state) + tile.at(begin) : &state.of(s)[begin];
  }
  if (reacts) equations.kinetics().rates(begin, end, now_rows_.data(), rate_rows_.data());
  bool below_0 = false;
  for (std::size_t c = 0; c < stretch_.classes.size(); ++c)
    below_0 = advance_class(equations, c, stage, tile, begin, end, origin, reacts, state) || below_0;
  add_to_balances(equations, stage, tile, std::max(begin, tile.begin), std::min(end, tile.end), begin, days, state,
                  balances);
  return !below_0;
}

// With masses M = V C and the rates F of the stages, the next stage has M0 + reach F, and the result is
// M0 + (F0 + 2 F1 + 2 F2 + F3) / 6 = (-M0 + M1 + 2 M2 + M3) / 3 + F3 / 6.
template <class Share>
void RungeKutta::find_weights(std::size_t stage, double days, Share share) {
  Weights& it = weights_[stage];
  share(it.per_rate, reach[stage] * days, stage);
  if (stage == 0) share(it.keep, 1, 0);
  if (stage == 1 || stage == 2) share(it.earlier[0], 1, 0);
  if (stage + 1 < stages) return;
  share(it.keep, 1.0 / 3, 3);
  share(it.earlier[0], -1.0 / 3, 0);
  share(it.earlier[1], 1.0 / 3, 1);
  share(it.earlier[2], 2.0 / 3, 2);
}

// A tile within the model needs no copy of what it starts from.
const double* RungeKutta::stage_values(std::size_t stage, std::size_t system, const Tile& tile,
                                       const State& state) const {
  if (stage == 0 && tile.first > 0 && tile.last < state.volume.size()) return &state.of(system)[tile.first - 1];
  return &stage_[stage][system * stage_size_];
}

bool RungeKutta::advance_class(const Equations& equations, std::size_t which, std::size_t stage, const Tile& tile,
                               std::size_t begin, std::size_t end, std::size_t origin, bool reacts,
                               const State& state) {
  const TransportClass& its_class = equations.classes()[which];
  const std::size_t at = tile.at(begin), model_size = next_volume_.size();
  const bool last = stage + 1 == stages;
  const auto next_of = [&](std::size_t system) {
    return last ? &next_[system * model_size + begin] : values(stage + 1, system) + at;
  };
  const Problem& problem = equations.problem();
  rows_.clear();
  for (const std::size_t system : its_class.systems())
    rows_.push_back(
        {.now = stage_values(stage, system, tile, state) + at,
         .earlier = {stage_values(0, system, tile, state) + at, values(1, system) + at, values(2, system) + at},
         .rate = rate_rows_[system],
         .next = next_of(system),
         .most = limits(problem, system).most});
  const Coefficients& it = stretch_.classes[which];
  const Weights& weights = weights_[stage];
  const StageShares shares{
      .out = &it.out[begin - origin],
      .lower = it.lower() + (begin - origin),
      .upper = it.upper() + (begin - origin),
      .per_gram = stretch_.per_gram.data(),
      .keep = weights.keep.data(),
      .per_rate = weights.per_rate.data(),
      .weights = {weights.earlier[0].data(), weights.earlier[1].data(), weights.earlier[2].data()}};
  const std::size_t earlier = last ? 3 : stage > 0 ? 1 : 0;
  bool beyond = advance_stage(end - begin, shares, rows_, earlier, reacts);
  const auto gaining = equations.gaining();
  for (auto k = static_cast<std::size_t>(std::ranges::lower_bound(gaining, begin) - gaining.begin());
       k < gaining.size() && gaining[k] < end; ++k) {
    for (const StageRow& row : rows_) {
      const std::size_t system = its_class.systems()[static_cast<std::size_t>(&row - rows_.data())];
      double& value = row.next[gaining[k] - begin];
      value += stretch_.per_gram[gaining[k] - begin] * gain_[stage][system][k];
      beyond = beyond || !(value <= row.most);
    }
  }
  if (!last || !beyond) return false;
  // What gains make up for is not below 0.
  exceeds_ = exceeds_ || std::ranges::any_of(
                             rows_, [&](const StageRow& row) { return any_above(end - begin, row.next, row.most); });
  return std::ranges::any_of(rows_, [&](const StageRow& row) { return !all_at_least_0(end - begin, row.next); });
}

// What segments from to to lost and reacted by this stage, whose rates begin at `begin`.
void RungeKutta::add_to_balances(const Equations& equations, std::size_t stage, const Tile& tile, std::size_t from,
                                 std::size_t to, std::size_t begin, double days, const State& state,
                                 Balances& balances) {
  const double* const volume = is_steady_ ? &state.volume[tile.first] : volume_[stage].data();
  for (const TransportClass& it : equations.classes()) {
    for (const std::size_t system : it.systems()) {
      MassFlux& moved = balances.systems[system].moved;
      moved.add(equations.losses(it, from, to, stage_values(stage, system, tile, state) + tile.at(from)),
                weights[stage] * days);
      if (!equations.kinetics().reacts()) continue;
      double reacted = 0;
      for (std::size_t i = from; i < to; ++i) reacted += volume[i - tile.first] * rate_rows_[system][i - begin];
      moved.reacted += weights[stage] * days * reacted;
    }
  }
}

} // namespace reference_engine
