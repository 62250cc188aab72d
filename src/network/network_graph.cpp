#include "network/network_graph.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace vesk {

namespace {

constexpr std::size_t water_fields = 2; // surface water and pore water; the others carry solids or are air

double finite_or_zero(double value) {
  return std::isfinite(value) ? value : 0;
}

// Collects the pairs between segments; those between the same two are merged.
class flow_collector {
public:
  void add(segment_number from, segment_number to, bool is_water, double mean) {
    if (from < to)
      found_.push_back({from, to, mean, is_water, false});
    else
      found_.push_back({to, from, -mean, is_water, true});
  }

  std::vector<network_flow> take() {
    std::ranges::stable_sort(found_, {}, [](const entry& e) { return std::tuple(e.one, e.two, !e.is_water); });
    std::vector<network_flow> flows;
    for (std::size_t i = 0; i < found_.size();) {
      entry sum = found_[i];
      for (++i; i < found_.size() && sum.has_ends_of(found_[i]); ++i) sum.mean += found_[i].mean;
      const bool backwards = sum.mean < 0 || (sum.mean == 0 && sum.was_turned);
      flows.push_back({backwards ? sum.two : sum.one, backwards ? sum.one : sum.two, std::abs(sum.mean), sum.is_water});
    }
    return flows;
  }

private:
  struct entry {
    segment_number one, two; // one < two
    double mean;             // from one to two
    bool is_water, was_turned;

    bool has_ends_of(const entry& other) const {
      return one == other.one && two == other.two && is_water == other.is_water;
    }
  };
  std::vector<entry> found_;
};

class network_maker {
public:
  explicit network_maker(const prevesk_dataset_data_type& data) : data_(data) {}

  network_graph make() {
    take_segments();
    for (std::size_t field = 0; field < data_.flow_fields.size(); ++field) take_flows(field);
    for (const auto& field : data_.exchange_fields)
      for (const auto& function : field.functions)
        for (const auto& pair : function.pairs) take_exchange(pair.segment_one, pair.segment_two);
    network_.flows = flows_.take();
    auto& exchanges = network_.exchanges;
    const auto ends = [](const network_exchange& e) { return std::pair(e.one, e.two); };
    std::ranges::sort(exchanges, {}, ends);
    exchanges.erase(std::ranges::unique(exchanges).begin(), exchanges.end());
    return std::move(network_);
  }

private:
  bool is_segment(std::int32_t reference) const {
    return reference >= 0 && static_cast<std::size_t>(reference) < data_.segments.size();
  }
  network_segment& segment(std::int32_t reference) { return network_.segments[static_cast<std::size_t>(reference)]; }

  void take_segments() {
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    network_.segments.reserve(data_.segments.size());
    for (const segment_data_type& one : data_.segments) {
      network_segment& taken = network_.segments.emplace_back();
      taken.name = one.name.str();
      taken.length = std::isfinite(one.length) && one.length > 0 ? one.length : unknown;
      const auto own = static_cast<std::int32_t>(network_.segments.size() - 1);
      if (is_segment(one.bottom_segment) && one.bottom_segment != own) taken.bottom = one.bottom_segment;
    }
    for (const system_data_type& system : data_.systems) {
      for (const auto& load : system.loads)
        if (is_segment(load.segment)) ++segment(load.segment).loads;
      for (const auto& boundary : system.boundaries)
        if (is_segment(boundary.segment)) ++segment(boundary.segment).boundaries;
    }
  }

  void take_flows(std::size_t number) {
    const flow_field_data_type& field = data_.flow_fields[number];
    const bool is_water = number < water_fields;
    for (const auto& function : field.functions) {
      const bool steps = function.interpolation_type != interpolation_linear;
      const double mean = field.used
                              ? field.scale * field.conversion *
                                    mean_over(function.points, steps, data_.start_date_time(), data_.end_date_time())
                              : 0;
      for (const auto& pair : function.pairs)
        take_flow(pair.from_segment, pair.to_segment, is_water, finite_or_zero(mean * pair.fraction));
    }
  }

  void take_flow(std::int32_t from, std::int32_t to, bool is_water, double mean) {
    if (is_segment(from) && is_segment(to) && from != to)
      flows_.add(static_cast<segment_number>(from), static_cast<segment_number>(to), is_water, mean);
    else if (from < 0 && is_segment(to))
      take_outside(segment(to), true, is_water, mean);
    else if (to < 0 && is_segment(from))
      take_outside(segment(from), false, is_water, mean);
    else
      ++network_.bad_pairs;
  }

  static void take_outside(network_segment& inner, bool into, bool is_water, double mean) {
    if (!is_water) return;
    const bool goes_in = into == (mean >= 0);
    (goes_in ? inner.inflow : inner.outflow) += std::abs(mean);
    (goes_in ? inner.flows_in : inner.flows_out) = true;
  }

  void take_exchange(std::int32_t one, std::int32_t two) {
    if (is_segment(one) && is_segment(two) && one != two)
      network_.exchanges.push_back(
          {static_cast<segment_number>(std::min(one, two)), static_cast<segment_number>(std::max(one, two))});
    else if (is_segment(one) && two < 0)
      segment(one).exchanges_outside = true;
    else if (is_segment(two) && one < 0)
      segment(two).exchanges_outside = true;
    else
      ++network_.bad_pairs;
  }

  const prevesk_dataset_data_type& data_;
  network_graph network_;
  flow_collector flows_;
};

} // namespace

network_graph make_network(const prevesk_dataset_data_type& data) {
  return network_maker(data).make();
}

double mean_over(const point_list& points, bool steps, double start, double end) {
  if (points.empty()) return 0;
  const auto value = [&](std::size_t i) { return finite_or_zero(points[i].value); };
  if (!(end > start)) { // without a period the first value is as good as any
    return value(0);
  }
  double sum = 0;
  // Integrates the part of the piece [from, to] within the period; values change linearly over the piece.
  const auto add = [&](double from, double to, double first, double last) {
    const double a = std::max(from, start), b = std::min(to, end);
    if (!(b > a)) return;
    const double slope = to > from && std::isfinite(to - from) ? (last - first) / (to - from) : 0;
    sum += (b - a) * (first + slope * ((a + b) / 2 - from));
  };
  const double last_time = points[points.size() - 1].date_time();
  add(std::min(start, points[0].date_time()), points[0].date_time(), value(0), value(0));
  for (std::size_t i = 0; i + 1 < points.size(); ++i)
    add(points[i].date_time(), points[i + 1].date_time(), value(i), steps ? value(i) : value(i + 1));
  add(last_time, std::max(end, last_time), value(points.size() - 1), value(points.size() - 1));
  return finite_or_zero(sum / (end - start));
}

bool network_graph::has_shape_of(const network_graph& other) const {
  const auto same_flow = [](const network_flow& a, const network_flow& b) {
    return a.from == b.from && a.to == b.to && a.is_water == b.is_water;
  };
  const auto same_segment = [](const network_segment& a, const network_segment& b) { return a.bottom == b.bottom; };
  return exchanges == other.exchanges && std::ranges::equal(flows, other.flows, same_flow) &&
         std::ranges::equal(segments, other.segments, same_segment);
}

std::string segment_label(const network_graph& network, std::size_t segment) {
  return std::to_string(segment + 1) + ": " + network.segments[segment].name;
}

} // namespace vesk
