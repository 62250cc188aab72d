#include "core/network.h"

#include "core/errors.h"
#include "core/text.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace reference_engine {

// A pair with its ends in order: `a` lies in the model, and a flow from b to a has a factor with its sign turned.
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
  check_ends(problem);
  for (const FlowPair& pair : problem.flows) flow_elements_.push_back(pair.element);
  for (const ExchangePair& pair : problem.exchanges) exchange_elements_.push_back(pair.element);
  keep_different(flow_elements_);
  keep_different(exchange_elements_);
  layout_.segments = problem.segments.size();
  make_links(gather(problem), problem.net_flows);
  place(problem, settles);
  values_.resize(links_.size());
  for (auto* per_segment : {&volume_change_, &water_out_, &surface_flow_, &surface_in_})
    per_segment->resize(layout_.segments);
}

void Network::check_ends(const Problem& problem) const {
  const std::size_t count = problem.segments.size();
  for (const FlowPair& pair : problem.flows) {
    check_end(pair.from, count, "A flow pair");
    check_end(pair.to, count, "A flow pair");
  }
  for (const ExchangePair& pair : problem.exchanges) {
    check_end(pair.one, count, "An exchange pair");
    check_end(pair.two, count, "An exchange pair");
  }
  for (const Segment& segment : problem.segments) check_end(segment.bottom, count, "A bottom segment");
}

std::vector<Network::PairEnds> Network::gather(const Problem& problem) const {
  std::vector<PairEnds> pairs;
  pairs.reserve(problem.flows.size() + problem.exchanges.size());
  const auto add = [&](int a, int b, Carrier carrier, Member member, double turned) {
    if (a == b) return; // joins a segment, or the outside, to itself: carries nothing
    if (a == outside || (b != outside && b < a)) {
      std::swap(a, b);
      member.factor *= turned;
    }
    pairs.push_back({static_cast<std::size_t>(a), b, carrier, member});
  };
  for (const FlowPair& pair : problem.flows)
    add(pair.from, pair.to, static_cast<Carrier>(pair.field), {position(flow_elements_, pair.element), pair.factor},
        -1.0);
  for (const ExchangePair& pair : problem.exchanges) {
    const auto carrier =
        pair.field == ExchangeField::surface_water ? Carrier::surface_exchange : Carrier::pore_exchange;
    add(pair.one, pair.two, carrier, {position(exchange_elements_, pair.element), pair.factor}, 1.0);
  }
  return pairs;
}

// Pairs become links in order of their segments, so that a step walks memory forwards. Exchanges between the same two
// segments are always one link, flows only when they are netted; flows across the rim always count by themselves.
void Network::make_links(std::vector<PairEnds> pairs, bool net_flows) {
  const auto key = [](const PairEnds& pair) { return std::tuple(pair.a, pair.b, pair.carrier); };
  std::stable_sort(pairs.begin(), pairs.end(), [&](const PairEnds& x, const PairEnds& y) { return key(x) < key(y); });
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    const PairEnds& pair = pairs[k];
    const bool merges = is_exchange(pair.carrier) || (net_flows && pair.b != outside);
    if (k == 0 || !merges || key(pair) != key(pairs[k - 1])) {
      member_starts_.push_back(members_.size());
      links_.push_back({.a = pair.a, .b = pair.b, .carrier = pair.carrier});
    }
    members_.push_back(pair.member);
  }
  member_starts_.push_back(members_.size());
}

// Finds each link's coefficients.
void Network::place(const Problem& problem, bool settles) {
  std::vector<std::pair<std::size_t, std::size_t>> far; // target, source
  const auto note = [&](std::size_t target, std::size_t source) {
    if (target != source + 1 && source != target + 1) far.emplace_back(target, source);
  };
  const auto has_bottom = [&](std::size_t i) {
    const int bottom = problem.segments[i].bottom;
    return settles && bottom != outside && bottom != static_cast<int>(i);
  };
  for (const Link& link : links_) {
    if (link.b == outside) {
      rim_.push_back(link.a);
    } else {
      note(link.a, static_cast<std::size_t>(link.b));
      note(static_cast<std::size_t>(link.b), link.a);
    }
  }
  for (std::size_t i = 0; i < layout_.segments; ++i)
    if (has_bottom(i)) note(static_cast<std::size_t>(problem.segments[i].bottom), i);

  std::sort(far.begin(), far.end());
  far.erase(std::unique(far.begin(), far.end()), far.end());
  for (const auto& [target, source] : far) far_terms_.push_back({target, source});
  keep_different(rim_);
  layout_.far_terms = far_terms_.size();
  layout_.rim = rim_.size();

  for (std::size_t k = 0; k < links_.size(); ++k) {
    Link& link = links_[k];
    if (link.b == outside) {
      rim_links_.push_back({k, rim_position(link.a)});
      link.into_a = layout_.unused();
      link.into_b = layout_.rim_out(rim_position(link.a));
      link.out_of_b = layout_.unused();
    } else {
      const auto b = static_cast<std::size_t>(link.b);
      link.into_a = place_of(link.a, b);
      link.into_b = place_of(b, link.a);
      link.out_of_b = layout_.out(b);
    }
  }
  settling_places_.assign(layout_.segments, layout_.unused());
  for (std::size_t i = 0; i < layout_.segments; ++i)
    if (has_bottom(i)) settling_places_[i] = place_of(static_cast<std::size_t>(problem.segments[i].bottom), i);
}

std::size_t Network::place_of(std::size_t target, std::size_t source) const {
  if (target == source + 1) return layout_.lower(target);
  if (source == target + 1) return layout_.upper(target);
  const auto before = [](const FarTerm& term, const FarTerm& wanted) {
    return std::tie(term.target, term.source) < std::tie(wanted.target, wanted.source);
  };
  const auto found = std::lower_bound(far_terms_.begin(), far_terms_.end(), FarTerm{target, source}, before);
  return layout_.far(static_cast<std::size_t>(found - far_terms_.begin()));
}

std::size_t Network::rim_position(std::size_t segment) const {
  return position(rim_, segment);
}

void Network::update(std::span<const double> flows, std::span<const double> exchanges,
                     const std::vector<double>& prescribed) {
  for (std::size_t k = 0; k < links_.size(); ++k) {
    const bool mixes = is_exchange(links_[k].carrier);
    const std::span<const double> driving = mixes ? exchanges : flows;
    double value = 0;
    for (std::size_t m = member_starts_[k]; m < member_starts_[k + 1]; ++m)
      value += members_[m].factor * driving[members_[m].element];
    if (value < 0 && mixes) refuse_exchange(links_[k]);
    values_[k] = value * seconds_per_day;
  }
  balance_water();
  settle_volume_change(prescribed);
}

void Network::refuse_exchange(const Link& link) const {
  const auto name = [this](std::size_t segment) { return numbered(problem_.segments[segment], segment); };
  throw RunError(text("The exchange of segment ", name(link.a), " with ",
                      link.b == outside ? "the outside" : "segment " + name(static_cast<std::size_t>(link.b)),
                      " is below 0."));
}

void Network::balance_water() {
  for (auto* sum : {&volume_change_, &water_out_, &surface_flow_, &surface_in_})
    std::fill(sum->begin(), sum->end(), 0.0);
  water_in_ = water_released_ = 0;
  const auto move = [this](int from, int to, double amount, bool on_surface) {
    if (from != outside) {
      const auto giver = static_cast<std::size_t>(from);
      volume_change_[giver] -= amount;
      water_out_[giver] += amount;
      if (on_surface) surface_flow_[giver] += amount;
    } else {
      water_in_ += amount;
    }
    if (to != outside) {
      const auto taker = static_cast<std::size_t>(to);
      volume_change_[taker] += amount;
      if (on_surface) surface_in_[taker] += amount;
    } else {
      water_released_ += amount;
    }
  };
  for (std::size_t k = 0; k < links_.size(); ++k) {
    const Link& link = links_[k];
    if (!moves_water(link.carrier)) continue;
    const bool on_surface = link.carrier == Carrier::surface_flow;
    if (values_[k] >= 0)
      move(static_cast<int>(link.a), link.b, values_[k], on_surface);
    else
      move(link.b, static_cast<int>(link.a), -values_[k], on_surface);
  }
  for (std::size_t i = 0; i < layout_.segments; ++i)
    surface_flow_[i] = std::max(surface_flow_[i], surface_in_[i]) / seconds_per_day;
}

void Network::settle_volume_change(const std::vector<double>& prescribed) {
  if (!prescribed.empty()) volume_change_ = prescribed;
  // Sums of the same flows in another order differ in their last digits; such a remainder is no change of volume.
  for (std::size_t i = 0; prescribed.empty() && i < layout_.segments; ++i) {
    const double turnover = 2 * water_out_[i] + volume_change_[i]; // what comes in and what goes out
    if (std::abs(volume_change_[i]) <= 1e-12 * turnover) volume_change_[i] = 0;
  }
  steady_ = std::all_of(volume_change_.begin(), volume_change_.end(), [](double change) { return change == 0; });
}

} // namespace reference_engine
