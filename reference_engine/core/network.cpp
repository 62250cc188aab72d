#include "core/network.h"

#include "core/errors.h"
#include "core/text.h"

#include "core/kernels.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace reference_engine {

// A pair with its ends in order: `a` is in the model; a flow from b to a has a factor of the opposite sign.
struct Network::PairEnds {
  std::size_t a;
  int b;
  Carrier carrier;
  Member member;
};

namespace {

void check_end(int segment, std::size_t segments, const char* what) {
  if (segment < outside || segment >= static_cast<int>(segments))
    throw InputError(text(what, " names segment ", segment + 1, ", but the model has ", segments, " segments."));
}

void keep_different(std::vector<std::size_t>& numbers) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

std::size_t position(const std::vector<std::size_t>& numbers, std::size_t number) {
  return static_cast<std::size_t>(std::lower_bound(numbers.begin(), numbers.end(), number) - numbers.begin());
}

} // namespace

Network::Network(const Problem& problem, bool settles) : problem_(problem) {
  check_ends();
  for (const FlowPair& pair : problem.flows) flow_elements_.push_back(pair.element);
  for (const ExchangePair& pair : problem.exchanges) exchange_elements_.push_back(pair.element);
  keep_different(flow_elements_);
  keep_different(exchange_elements_);
  std::vector<PairEnds> pairs = gather();
  const auto others = std::stable_partition(pairs.begin(), pairs.end(), [](const PairEnds& pair) {
    return pair.b != outside && static_cast<std::size_t>(pair.b) == pair.a + 1;
  });
  make_links({others, pairs.end()});
  pairs.erase(others, pairs.end());
  make_layers(std::move(pairs));
  place(settles);
  now_.links.resize(links_.size());
  now_.loose_water.resize(linked_.size());
}

void Network::check_ends() const {
  const std::size_t count = problem_.segments.size();
  for (const FlowPair& pair : problem_.flows) {
    check_end(pair.from, count, "A flow pair");
    check_end(pair.to, count, "A flow pair");
  }
  for (const ExchangePair& pair : problem_.exchanges) {
    check_end(pair.one, count, "An exchange pair");
    check_end(pair.two, count, "An exchange pair");
  }
  for (const Segment& segment : problem_.segments) check_end(segment.bottom, count, "A bottom segment");
}

std::vector<Network::PairEnds> Network::gather() const {
  std::vector<PairEnds> pairs;
  pairs.reserve(problem_.flows.size() + problem_.exchanges.size());
  const auto add = [&](int a, int b, Carrier carrier, Member member, double turned) {
    if (a == b) return; // joins a segment, or the outside, to itself: carries nothing
    if (a == outside || (b != outside && b < a)) {
      std::swap(a, b);
      member.factor *= turned;
    }
    member.factor *= seconds_per_day;
    pairs.push_back({static_cast<std::size_t>(a), b, carrier, member});
  };
  for (const FlowPair& pair : problem_.flows)
    add(pair.from, pair.to, static_cast<Carrier>(pair.field), {position(flow_elements_, pair.element), pair.factor},
        -1.0);
  for (const ExchangePair& pair : problem_.exchanges) {
    const auto carrier =
        pair.field == ExchangeField::surface_water ? Carrier::surface_exchange : Carrier::pore_exchange;
    add(pair.one, pair.two, carrier, {position(exchange_elements_, pair.element), pair.factor}, 1.0);
  }
  return pairs;
}

// Values of one layer are summed before their sign decides which segment gives. So exchanges, and flows that are
// netted, share a layer; gross flows between the same two segments have a layer each.
void Network::make_layers(std::vector<PairEnds> neighbours) {
  const auto key = [](const PairEnds& pair) { return std::pair(pair.carrier, pair.a); };
  std::ranges::stable_sort(neighbours, {}, key);
  std::vector<std::pair<Carrier, std::vector<PairEnds>>> layers;
  std::size_t first = 0, depth = 0; // of this carrier, and of this link's pairs so far
  for (std::size_t k = 0; k < neighbours.size(); ++k) {
    const PairEnds& pair = neighbours[k];
    if (k == 0 || pair.carrier != neighbours[k - 1].carrier) first = layers.size();
    const bool same_link = k > 0 && key(pair) == key(neighbours[k - 1]);
    const bool merges = is_exchange(pair.carrier) || problem_.net_flows;
    depth = same_link && !merges ? depth + 1 : 0;
    if (!same_link || !merges) ++layer_links_;
    if (first + depth == layers.size()) layers.emplace_back(pair.carrier, std::vector<PairEnds>());
    layers[first + depth].second.push_back(pair);
  }
  for (auto& [carrier, pairs] : layers) add_layer(carrier, std::move(pairs));
}

void Network::add_layer(Carrier carrier, std::vector<PairEnds> pairs) {
  const auto key = [](const PairEnds& pair) { return std::tuple(pair.a / block, pair.member.element, pair.a); };
  std::ranges::stable_sort(pairs, {}, key);
  Layer layer{.carrier = carrier, .strands = {}, .block_starts = {0}, .factors = {}, .turns = false};
  const PairEnds* before = nullptr;
  for (const PairEnds& pair : pairs) {
    const auto& [element, factor] = pair.member;
    const bool same_block = before != nullptr && before->a / block == pair.a / block;
    if (same_block && before->member.element == element && before->a == pair.a) {
      layer.factors.back() += factor;
    } else {
      if (same_block && before->member.element == element && before->a + 1 == pair.a) {
        ++layer.strands.back().count;
      } else {
        while (layer.block_starts.size() <= pair.a / block) layer.block_starts.push_back(layer.strands.size());
        layer.strands.push_back({.element = element, .first = pair.a, .count = 1, .factors = layer.factors.size()});
      }
      layer.factors.push_back(factor);
    }
    before = &pair;
  }
  while (layer.block_starts.size() <= problem_.segments.size() / block + 1)
    layer.block_starts.push_back(layer.strands.size());
  for (Strand& strand : layer.strands) {
    const double* const factors = &layer.factors[strand.factors];
    strand.is_uniform = std::all_of(factors, factors + strand.count, [&](double it) { return it == *factors; });
  }
  layer.turns = std::ranges::any_of(layer.factors, [](double factor) { return factor < 0; });
  if (moves_water(carrier)) water_layers_.push_back(layers_.size());
  layers_.push_back(std::move(layer));
}

// Exchanges between the same two segments are always one link, flows only when they are netted; flows through the
// boundary are always counted separately.
void Network::make_links(const std::vector<PairEnds>& given) {
  std::vector<PairEnds> pairs = given;
  const auto key = [](const PairEnds& pair) { return std::tuple(pair.a, pair.b, pair.carrier); };
  std::ranges::stable_sort(pairs, {}, key);
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    const PairEnds& pair = pairs[k];
    const bool merges = is_exchange(pair.carrier) || (problem_.net_flows && pair.b != outside);
    if (k == 0 || !merges || key(pair) != key(pairs[k - 1])) {
      member_starts_.push_back(members_.size());
      links_.push_back({.a = pair.a, .b = pair.b, .carrier = pair.carrier});
    }
    members_.push_back(pair.member);
  }
  member_starts_.push_back(members_.size());
}

// Finds where the links that are in no layer, and what settles, come in.
void Network::place(bool settles) {
  const auto far_bottom = [&](std::size_t i) {
    const int bottom = problem_.segments[i].bottom;
    const auto to = static_cast<std::size_t>(bottom);
    return settles && bottom != outside && to != i && to != i + 1 && i != to + 1;
  };
  std::vector<std::pair<std::size_t, std::size_t>> far; // target, source
  for (const Link& link : links_) {
    linked_.push_back(link.a);
    if (link.b == outside) {
      boundary_segments_.push_back(link.a);
    } else {
      const auto b = static_cast<std::size_t>(link.b);
      linked_.push_back(b);
      far.emplace_back(link.a, b);
      far.emplace_back(b, link.a);
    }
  }
  bool any_far_bottom = false;
  for (std::size_t i = 0; i < problem_.segments.size(); ++i) {
    if (!far_bottom(i)) continue;
    any_far_bottom = true;
    far.emplace_back(static_cast<std::size_t>(problem_.segments[i].bottom), i);
  }
  keep_different(linked_);
  keep_different(boundary_segments_);
  std::ranges::sort(far);
  far.erase(std::unique(far.begin(), far.end()), far.end());
  for (const auto& [target, source] : far) far_terms_.push_back({target, source});

  for (Link& link : links_) {
    link.at_a = position(linked_, link.a);
    if (link.b == outside) {
      link.boundary = position(boundary_segments_, link.a);
    } else {
      const auto b = static_cast<std::size_t>(link.b);
      link.at_b = position(linked_, b);
      link.into_a = far_term(link.a, b);
      link.into_b = far_term(b, link.a);
    }
  }
  if (any_far_bottom) settling_terms_.assign(problem_.segments.size(), nowhere);
  for (std::size_t i = 0; i < settling_terms_.size(); ++i)
    if (far_bottom(i)) settling_terms_[i] = far_term(static_cast<std::size_t>(problem_.segments[i].bottom), i);
}

std::vector<std::size_t> Network::joined() const {
  std::vector<std::size_t> joined;
  for (const Layer& layer : layers_)
    for (const Strand& strand : layer.strands)
      for (std::size_t k = 0; k < strand.count; ++k) joined.push_back(strand.first + k);
  for (std::size_t i = 0; i < problem_.segments.size(); ++i) {
    const int bottom = problem_.segments[i].bottom, at = static_cast<int>(i);
    if (bottom == at + 1) joined.push_back(i);
    if (bottom == at - 1 && bottom != outside) joined.push_back(i - 1);
  }
  keep_different(joined);
  return joined;
}

std::size_t Network::far_term(std::size_t target, std::size_t source) const {
  const auto before = [](const FarTerm& term, const FarTerm& wanted) {
    return std::tie(term.target, term.source) < std::tie(wanted.target, wanted.source);
  };
  const auto found = std::lower_bound(far_terms_.begin(), far_terms_.end(), FarTerm{target, source}, before);
  return static_cast<std::size_t>(found - far_terms_.begin());
}

void Network::update(std::span<const double> flows, std::span<const double> exchanges,
                     const std::vector<double>& prescribed) {
  const bool exchanges_changed = !std::ranges::equal(exchanges, now_.exchanges);
  now_.flows.assign(flows.begin(), flows.end());
  now_.exchanges.assign(exchanges.begin(), exchanges.end());
  if (prescribed_ != prescribed) prescribed_ = prescribed;
  for (std::size_t k = 0; k < links_.size(); ++k) {
    const bool mixes = is_exchange(links_[k].carrier);
    const std::span<const double> driving = mixes ? exchanges : flows;
    double value = 0;
    for (std::size_t m = member_starts_[k]; m < member_starts_[k + 1]; ++m)
      value += members_[m].factor * driving[members_[m].element];
    if (value < 0 && mixes) refuse_exchange(links_[k].a, links_[k].b);
    now_.links[k] = value;
  }
  if (exchanges_changed) check_exchanges();
  find_loose_water();
}

void Network::check_exchanges() const {
  const bool any_below_0 = std::ranges::any_of(now_.exchanges, [](double value) { return value < 0; });
  for (std::size_t layer = 0; layer < layers_.size(); ++layer)
    if (is_exchange(layers_[layer].carrier) && (any_below_0 || layers_[layer].turns)) check_layer(layer);
}

void Network::check_layer(std::size_t layer) const {
  std::vector<double> values(block + 1);
  for (std::size_t begin = 0; begin < problem_.segments.size(); begin += block) {
    const std::size_t end = std::min(begin + block, problem_.segments.size());
    layer_values(layer, begin, end, values.data());
    for (std::size_t k = 0; k <= end - begin; ++k)
      if (values[k] < 0) refuse_exchange(begin + k - 1, static_cast<int>(begin + k));
  }
}

void Network::refuse_exchange(std::size_t a, int b) const {
  const auto name = [this](std::size_t segment) { return numbered(problem_.segments[segment], segment); };
  throw RunError(text("The exchange of segment ", name(a), " with ",
                      b == outside ? "the outside" : "segment " + name(static_cast<std::size_t>(b)), " is below 0."));
}

void Network::take_layers(std::size_t begin, std::size_t end, LayerValues& into) const {
  into.begin = begin;
  into.end = end;
  into.of.resize(layers_.size());
  for (std::size_t layer = 0; layer < layers_.size(); ++layer) {
    into.of[layer].resize(end - begin + 1);
    layer_values(layer, begin, end, into.of[layer].data());
  }
}

// A layer without a link in a block has none of its strands.
void Network::layer_values(std::size_t layer, std::size_t begin, std::size_t end, double* values) const {
  const Layer& it = layers_[layer];
  const std::span<const double> driving = is_exchange(it.carrier) ? now_.exchanges : now_.flows;
  const std::size_t first = begin > 0 ? begin - 1 : 0; // values[0] is link begin - 1
  if (begin == 0) *values++ = 0;
  std::size_t filled = first; // links before it have their values
  for (std::size_t b = first / block; b <= (end - 1) / block; ++b) {
    for (std::size_t s = it.block_starts[b]; s < it.block_starts[b + 1]; ++s) {
      const Strand& strand = it.strands[s];
      const std::size_t from = std::max(first, strand.first), to = std::min(end, strand.first + strand.count);
      if (from >= to) continue;
      const double* const factors = &it.factors[strand.factors + from - strand.first];
      const double drive = driving[strand.element];
      const std::size_t old_end = std::min(std::max(filled, from), to); // values before it are there already
      if (from > filled) std::fill(values + (filled - first), values + (from - first), 0.0);
      add_multiple(old_end - from, drive, factors, values + (from - first));
      if (strand.is_uniform)
        set_all(to - old_end, drive * *factors, values + (old_end - first));
      else
        set_multiple(to - old_end, drive, factors + (old_end - from), values + (old_end - first));
      filled = std::max(filled, to);
    }
  }
  std::fill(values + (filled - first), values + (end - first), 0.0);
}

// Water by the links that are in no layer.
void Network::find_loose_water() {
  std::ranges::fill(now_.loose_water, Water{});
  now_.water_in = now_.water_released = 0;
  for (std::size_t k = 0; k < links_.size(); ++k) {
    const Link& link = links_[k];
    if (!moves_water(link.carrier)) continue;
    const bool on_surface = link.carrier == Carrier::surface_flow, from_a = now_.links[k] >= 0;
    const double amount = std::abs(now_.links[k]);
    const std::size_t giver = from_a ? link.at_a : link.at_b, taker = from_a ? link.at_b : link.at_a;
    if (giver == nowhere) {
      now_.water_in += amount;
    } else {
      now_.loose_water[giver].change -= amount;
      now_.loose_water[giver].out += amount;
      if (on_surface) now_.loose_water[giver].surface_out += amount;
    }
    if (taker == nowhere) {
      now_.water_released += amount;
    } else {
      now_.loose_water[taker].change += amount;
      if (on_surface) now_.loose_water[taker].surface_in += amount;
    }
  }
}

// visit(segment, its water by links in no layer)
template <class Visit>
void Network::visit_linked(std::size_t begin, std::size_t end, Visit visit) const {
  for (auto k = static_cast<std::size_t>(std::ranges::lower_bound(linked_, begin) - linked_.begin());
       k < linked_.size() && linked_[k] < end; ++k)
    visit(linked_[k], now_.loose_water[k]);
}

void Network::find_water_out(const LayerValues& layers, double* out) const {
  const std::size_t count = layers.end - layers.begin;
  for (const std::size_t layer : water_layers_)
    add_outflow(count, layers.of[layer].data(), layer == water_layers_.front(), out);
  if (water_layers_.empty()) std::fill_n(out, count, 0.0);
  visit_linked(layers.begin, layers.end,
               [&](std::size_t segment, const Water& water) { out[segment - layers.begin] += water.out; });
}

// Links that are in no layer come to few segments, whose balance is then computed again.
void Network::move_water(const LayerValues& layers, WaterMoved& into) const {
  const std::size_t begin = layers.begin, end = layers.end;
  const std::size_t count = end - begin;
  into.change.resize(count);
  if (!prescribed_.empty()) {
    std::copy_n(prescribed_.begin() + static_cast<std::ptrdiff_t>(begin), count, into.change.begin());
    into.steady = std::ranges::all_of(into.change, [](double change) { return change == 0; });
    return;
  }
  into.out.resize(count);
  if (water_layers_.empty()) std::ranges::fill(into.change, 0.0);
  std::size_t moving = 0;
  for (const std::size_t layer : water_layers_)
    moving = add_water(count, layers.of[layer].data(), layer == water_layers_.front(), layer == water_layers_.back(),
                       into.change.data(), into.out.data());
  visit_linked(begin, end, [&](std::size_t segment, const Water& water) {
    double& change = into.change[segment - begin];
    moving -= change != 0 ? 1 : 0;
    double net = water.change, out = water.out;
    for (const std::size_t layer : water_layers_) {
      const double* const flow = &layers.of[layer][segment - begin];
      net += flow[0] - flow[1];
      out += std::max(flow[1], 0.0) + std::max(-flow[0], 0.0);
    }
    change = without_rounding(net, out);
    moving += change != 0 ? 1 : 0;
  });
  into.steady = moving == 0;
}

void Network::surface_flow(const LayerValues& layers, std::span<double> flow) const {
  const std::size_t begin = layers.begin, end = layers.end;
  const std::size_t count = end - begin;
  std::vector<double> in(count), out(count);
  for (std::size_t layer = 0; layer < layers_.size(); ++layer) {
    if (layers_[layer].carrier != Carrier::surface_flow) continue;
    const std::vector<double>& value = layers.of[layer];
    for (std::size_t k = 0; k < count; ++k) {
      in[k] += std::max(value[k], 0.0) + std::max(-value[k + 1], 0.0);
      out[k] += std::max(value[k + 1], 0.0) + std::max(-value[k], 0.0);
    }
  }
  visit_linked(begin, end, [&](std::size_t segment, const Water& water) {
    in[segment - begin] += water.surface_in;
    out[segment - begin] += water.surface_out;
  });
  for (std::size_t k = 0; k < count; ++k) flow[k] = std::max(in[k], out[k]) / seconds_per_day;
}

} // namespace reference_engine
