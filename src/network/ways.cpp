#include "network/ways.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <queue>
#include <set>

namespace vesk {

namespace {

constexpr double unreachable = std::numeric_limits<double>::infinity();
constexpr std::size_t longest_search = 4'000'000; // connections visited, for all legs of one search

struct connection {
  segment_number to;
  double flow; // m3/s
};

// Connections by their first segment.
class adjacency {
public:
  struct edge {
    segment_number from, to;
    double flow;
  };
  adjacency(std::size_t segments, std::vector<edge> edges) : begin_(segments + 1) {
    std::ranges::stable_sort(edges, {}, &edge::from);
    for (const edge& one : edges) ++begin_[one.from + 1];
    for (std::size_t i = 1; i < begin_.size(); ++i) begin_[i] += begin_[i - 1];
    for (const edge& one : edges) all_.push_back({one.to, one.flow});
  }
  std::span<const connection> of(segment_number from) const {
    return std::span(all_).subspan(begin_[from], begin_[from + 1] - begin_[from]);
  }
  std::size_t size() const { return begin_.size() - 1; }

private:
  std::vector<std::size_t> begin_;
  std::vector<connection> all_;
};

std::vector<adjacency::edge> edges_of(const network_graph& network, found_ways::course follows) {
  std::vector<adjacency::edge> edges;
  const bool across = follows == found_ways::course::across;
  for (const network_flow& flow : network.flows) {
    if (!flow.is_water && !across) continue;
    const double mean = flow.is_water ? flow.mean : 0;
    if (follows != found_ways::course::upstream) edges.push_back({flow.from, flow.to, mean});
    if (follows != found_ways::course::downstream) edges.push_back({flow.to, flow.from, mean});
  }
  if (across)
    for (const network_exchange& exchange : network.exchanges) {
      edges.push_back({exchange.one, exchange.two, 0});
      edges.push_back({exchange.two, exchange.one, 0});
    }
  return edges;
}

adjacency turned(std::size_t segments, std::vector<adjacency::edge> edges) {
  for (auto& one : edges) std::swap(one.from, one.to);
  return {segments, std::move(edges)};
}

// Ways from one segment to another by increasing length: Yen's algorithm, with Lawler's rule that a way is only varied
// after the point where it leaves its parent. A backward search from the end gives the remaining length, which keeps
// each search (A*) on course.
class leg_search {
public:
  leg_search(const adjacency& ahead, const adjacency& back, const std::vector<double>& costs, std::size_t& work_left)
      : ahead_(ahead), back_(back), costs_(costs), work_left_(work_left), still_(ahead.size(), unreachable),
        blocked_(ahead.size(), false) {}

  // False: there are, or may be, more.
  bool find(segment_number from, segment_number to, std::size_t most, std::vector<std::vector<segment_number>>& ways) {
    search_back(to);
    if (still_[from] == unreachable) return work_left_ > 0;
    std::set<candidate> candidates;
    if (const auto first = shortest(from, to, {}, {})) candidates.insert({cost_of(*first), *first, 0});
    while (!candidates.empty()) {
      if (ways.size() == most) return false;
      const candidate best = candidates.extract(candidates.begin()).value();
      ways.push_back(best.way);
      if (!vary(best, to, ways, candidates)) return false;
    }
    return work_left_ > 0;
  }

  // The way with the greatest least flow; empty if the search was given up.
  std::vector<segment_number> widest(segment_number from, segment_number to) {
    std::vector<double> best(ahead_.size(), -1);
    std::vector<segment_number> before(ahead_.size());
    std::priority_queue<std::pair<double, segment_number>> open; // greatest flow first
    best[from] = unreachable;
    open.emplace(unreachable, from);
    while (!open.empty()) {
      const auto [flow, at] = open.top();
      open.pop();
      if (flow < best[at]) continue;
      if (at == to) return path_to(from, to, before);
      if (!may_look_at(ahead_.of(at).size())) return {};
      for (const connection& next : ahead_.of(at)) {
        const double through = std::min(flow, next.flow);
        if (through <= best[next.to]) continue;
        best[next.to] = through;
        before[next.to] = at;
        open.emplace(through, next.to);
      }
    }
    return {};
  }

private:
  struct candidate {
    double cost;
    std::vector<segment_number> way;
    std::size_t leaves_at; // position at which it leaves its parent

    friend bool operator<(const candidate& a, const candidate& b) {
      return a.cost != b.cost ? a.cost < b.cost : a.way < b.way;
    }
  };

  bool may_look_at(std::size_t connections) {
    work_left_ -= std::min(work_left_, connections + 1);
    return work_left_ > 0;
  }

  double cost_of(const std::vector<segment_number>& way) const {
    double sum = 0;
    for (const segment_number one : way) sum += costs_[one];
    return sum;
  }

  static std::vector<segment_number> path_to(segment_number from, segment_number to,
                                             const std::vector<segment_number>& before) {
    std::vector<segment_number> way{to};
    while (way.back() != from) way.push_back(before[way.back()]);
    std::ranges::reverse(way);
    return way;
  }

  void search_back(segment_number to) {
    std::priority_queue<std::pair<double, segment_number>, std::vector<std::pair<double, segment_number>>,
                        std::greater<>>
        open;
    still_[to] = 0;
    open.emplace(0, to);
    while (!open.empty()) {
      const auto [cost, at] = open.top();
      open.pop();
      if (cost > still_[at]) continue;
      for (const connection& next : back_.of(at)) {
        const double through = cost + costs_[at];
        if (through >= still_[next.to]) continue;
        still_[next.to] = through;
        open.emplace(through, next.to);
      }
    }
  }

  // From `from` on, avoiding blocked segments and, as the first step, those in `barred`.
  std::optional<std::vector<segment_number>> shortest(segment_number from, segment_number to,
                                                      const std::vector<segment_number>& root,
                                                      const std::vector<segment_number>& barred) {
    if (cost_.empty()) cost_.assign(ahead_.size(), unreachable), before_.resize(ahead_.size());
    std::vector<segment_number> touched{from};
    std::priority_queue<std::pair<double, segment_number>, std::vector<std::pair<double, segment_number>>,
                        std::greater<>>
        open;
    cost_[from] = 0;
    open.emplace(still_[from], from);
    bool found = false;
    while (!open.empty() && !found) {
      const auto [estimate, at] = open.top();
      open.pop();
      if (estimate > cost_[at] + still_[at]) continue;
      if (at == to) found = true;
      if (found || !may_look_at(ahead_.of(at).size())) break;
      for (const connection& next : ahead_.of(at)) {
        if (blocked_[next.to] || still_[next.to] == unreachable) continue;
        if (at == from && std::ranges::find(barred, next.to) != barred.end()) continue;
        const double through = cost_[at] + costs_[next.to];
        if (through >= cost_[next.to]) continue;
        if (cost_[next.to] == unreachable) touched.push_back(next.to);
        cost_[next.to] = through;
        before_[next.to] = at;
        open.emplace(through + still_[next.to], next.to);
      }
    }
    std::vector<segment_number> way = root;
    if (found) std::ranges::copy(path_to(from, to, before_), std::back_inserter(way));
    for (const segment_number one : touched) cost_[one] = unreachable;
    return found ? std::optional(way) : std::nullopt;
  }

  // Adds the ways that leave `parent` after each of its segments to the candidates. False: given up.
  bool vary(const candidate& parent, segment_number to, const std::vector<std::vector<segment_number>>& ways,
            std::set<candidate>& candidates) {
    const auto& way = parent.way;
    for (std::size_t i = 0; i < parent.leaves_at; ++i) blocked_[way[i]] = true;
    std::vector<segment_number> root(way.begin(), way.begin() + static_cast<std::ptrdiff_t>(parent.leaves_at));
    std::vector<const std::vector<segment_number>*> same_root; // the ways that start with the same segments
    for (const auto& one : ways)
      if (std::ranges::equal(root, std::span(one).first(std::min(root.size(), one.size())))) same_root.push_back(&one);
    for (std::size_t i = parent.leaves_at; i + 1 < way.size() && work_left_ > 0; ++i) {
      std::vector<segment_number> barred;
      std::erase_if(same_root, [&](const auto* one) { return i >= one->size() || (*one)[i] != way[i]; });
      for (const auto* one : same_root)
        if (i + 1 < one->size()) barred.push_back((*one)[i + 1]);
      blocked_[way[i]] = true;
      // Most segments of a river have only one way out.
      const auto out = ahead_.of(way[i]);
      const bool has_other = std::ranges::any_of(out, [&](const connection& next) {
        return !blocked_[next.to] && still_[next.to] != unreachable &&
               std::ranges::find(barred, next.to) == barred.end();
      });
      may_look_at(out.size());
      if (has_other)
        if (const auto other = shortest(way[i], to, root, barred)) candidates.insert({cost_of(*other), *other, i});
      root.push_back(way[i]);
    }
    for (const segment_number one : way) blocked_[one] = false;
    return work_left_ > 0;
  }

  const adjacency& ahead_;
  const adjacency& back_;
  const std::vector<double>& costs_; // of entering a segment
  std::size_t& work_left_;
  std::vector<double> still_; // shortest distance from the segment to the end
  std::vector<bool> blocked_;
  std::vector<double> cost_; // of the current search
  std::vector<segment_number> before_;
};

double least_flow(const adjacency& ahead, const std::vector<segment_number>& way) {
  double least = unreachable;
  for (std::size_t i = 0; i + 1 < way.size(); ++i) {
    double between = 0;
    for (const connection& next : ahead.of(way[i]))
      if (next.to == way[i + 1]) between += next.flow;
    least = std::min(least, between);
  }
  return std::isfinite(least) ? least : 0;
}

bool has_a_segment_twice(std::vector<segment_number> way) {
  std::ranges::sort(way);
  return std::ranges::adjacent_find(way) != way.end();
}

// The ways of one course.
class course_search {
public:
  course_search(const network_graph& network, found_ways::course follows, std::size_t most)
      : ahead_(network.segments.size(), edges_of(network, follows)),
        back_(turned(network.segments.size(), edges_of(network, follows))), lengths_(lengths_of(network)),
        costs_(lengths_), most_(most) {
    if (std::ranges::any_of(lengths_, [](double length) { return std::isnan(length); }))
      costs_.assign(lengths_.size(), 1);
  }

  // False: there may be more.
  bool find(std::span<const segment_number> through, std::vector<river_way>& found) {
    using way = std::vector<segment_number>;
    bool are_all = true;
    std::vector<way> ways{{through.front()}};
    for (std::size_t leg = 0; leg + 1 < through.size() && !ways.empty(); ++leg) {
      std::vector<way> next;
      if (!find_leg(through[leg], through[leg + 1], next)) are_all = false;
      std::vector<way> joined;
      for (const way& before : ways)
        for (const way& after : next) {
          way both = before;
          both.insert(both.end(), after.begin() + 1, after.end());
          if (!has_a_segment_twice(both)) joined.push_back(std::move(both));
        }
      ways = std::move(joined);
      are_all = keep_the_best(ways) && are_all;
    }
    for (way& one : ways) {
      double length = 0;
      for (const segment_number segment : one) length += lengths_[segment];
      const double flow = least_flow(ahead_, one);
      found.push_back({std::move(one), length, flow});
    }
    std::ranges::stable_sort(found, std::greater(), &river_way::flow);
    return are_all;
  }

private:
  bool find_leg(segment_number from, segment_number to, std::vector<std::vector<segment_number>>& ways) {
    leg_search search(ahead_, back_, costs_, work_left_);
    if (search.find(from, to, most_, ways)) return true;
    work_left_ = std::max(work_left_, longest_search / 10); // the main way is always searched for
    auto main = search.widest(from, to);
    if (!main.empty() && std::ranges::find(ways, main) == ways.end()) {
      if (ways.size() == most_) ways.pop_back();
      ways.push_back(std::move(main));
    }
    return false;
  }

  // The shortest, and the one with the greatest flow.
  bool keep_the_best(std::vector<std::vector<segment_number>>& ways) const {
    if (ways.size() <= most_) return true;
    const auto cost = [this](const auto& way) {
      double sum = 0;
      for (const segment_number one : way) sum += costs_[one];
      return sum;
    };
    const auto flow = [this](const auto& way) { return least_flow(ahead_, way); };
    auto main = *std::ranges::max_element(ways, {}, flow);
    std::ranges::stable_sort(ways, {}, cost);
    ways.resize(most_);
    if (std::ranges::find(ways, main) == ways.end()) ways.back() = std::move(main);
    return false;
  }

  const adjacency ahead_, back_;
  const std::vector<double> lengths_;
  std::vector<double> costs_;
  const std::size_t most_;
  std::size_t work_left_ = longest_search;
};

} // namespace

found_ways find_ways(const network_graph& network, std::span<const segment_number> through, std::size_t most) {
  found_ways found;
  for (const segment_number one : through)
    if (one >= network.segments.size()) return found;
  if (through.empty()) return found;
  using enum found_ways::course;
  for (const auto follows : {downstream, upstream, across}) {
    found.follows = follows;
    found.are_all = course_search(network, follows, most).find(through, found.ways);
    if (!found.ways.empty()) break;
  }
  return found;
}

std::vector<double> lengths_of(const network_graph& network) {
  std::vector<double> lengths;
  lengths.reserve(network.segments.size());
  for (const network_segment& one : network.segments) lengths.push_back(one.length);
  return lengths;
}

way_axis axis_along(const river_way& way, const std::vector<double>& lengths) {
  way_axis axis;
  double passed = 0;
  for (const segment_number segment : way.segments) {
    const double length = segment < lengths.size() ? lengths[segment] : std::numeric_limits<double>::quiet_NaN();
    if (!(length > 0) || !std::isfinite(length)) axis.is_in_metres = false;
    axis.at.push_back(passed + length / 2);
    passed += length;
  }
  if (!axis.is_in_metres)
    for (std::size_t i = 0; i < axis.at.size(); ++i) axis.at[i] = static_cast<double>(i + 1);
  return axis;
}

} // namespace vesk
