#include "host/read_points.h"

#include "core/errors.h"
#include "core/forcing.h"
#include "core/text.h"
#include "core/timeline.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace reference_engine {

namespace {

// The points of one series, in the types of the interface.
struct Points {
  std::vector<float> days, values;

  void resize(std::int32_t count) {
    days.resize(static_cast<std::size_t>(count));
    values.resize(days.size());
  }
};

// The days of many series. Most have the same days as the series before.
class Days {
public:
  explicit Days(double end) : end_(end) {}

  void add(const Points& points) {
    if (points.days == last_) return;
    last_ = points.days;
    for (const float day : points.days)
      if (day > 0 && static_cast<double>(day) < end_) days_.push_back(to_second(static_cast<double>(day)));
    if (days_.size() > 2 * kept_ + most_unsorted) keep_different();
  }

  std::vector<double> take() {
    keep_different();
    return std::move(days_);
  }

private:
  static constexpr std::size_t most_unsorted = std::size_t{1} << 20;

  void keep_different() {
    std::sort(days_.begin(), days_.end());
    days_.erase(std::unique(days_.begin(), days_.end()), days_.end());
    kept_ = days_.size();
  }

  double end_;
  std::vector<double> days_;
  std::vector<float> last_;
  std::size_t kept_ = 0;
};

class PointReader {
public:
  PointReader(Host& host, double days) : host_(host), days_(days) {}

  // A series whose points are read all at once.
  template <class Name, class... Index>
  void read_array(std::string_view count, std::string_view all, Name name, Index... indices) {
    points_.resize(host_.count(count, indices...));
    if (points_.days.empty()) return;
    host_.series(all, points_.days.data(), points_.values.data(), indices...);
    take(name);
  }
  // A series whose points are read one by one.
  template <class Name, class... Index>
  void read_points(std::string_view count, std::string_view point, Name name, Index... indices) {
    points_.resize(host_.count(count, indices...));
    for (std::size_t k = 0; k < points_.days.size(); ++k)
      host_.series(point, &points_.days[k], &points_.values[k], indices..., static_cast<std::int32_t>(k + 1));
    take(name);
  }

  std::vector<double> take_days() { return days_.take(); }

private:
  template <class Name>
  void take(Name name) {
    const auto finite = [](float value) { return std::isfinite(value); };
    for (const auto* values : {&points_.days, &points_.values}) {
      const auto wrong = std::ranges::find_if_not(*values, finite);
      if (wrong == values->end()) continue;
      const auto k = static_cast<std::size_t>(wrong - values->begin());
      throw InputError(text("Point ", k + 1, " of ", name(), " (day ", points_.days[k], ", value ", points_.values[k],
                            ") is not a finite number. Correct or delete it."));
    }
    if (const auto back = std::ranges::is_sorted_until(points_.days); back != points_.days.end())
      host_.warning(text("The points of ", name(), " are not in time order: point ", back - points_.days.begin() + 1,
                         " (day ", *back,
                         ") is before the one above it. Values between them may be wrong; sort them."));
    days_.add(points_);
    host_.stop_if_cancelled();
  }

  Host& host_;
  Days days_;
  Points points_;
};

void read_time_functions(Host& host, PointReader& reader) {
  const std::int32_t functions = host.count("NUMTF");
  for (std::int32_t k = 1; k <= functions; ++k)
    reader.read_array(
        "NBRKTF", "ALLBRKTF", [&] { return "the time function " + host.string("TFDESC", k); }, k);
}

void read_loads_and_boundaries(Host& host, const Problem& problem, PointReader& reader) {
  std::set<int> at_boundary;
  const auto note = [&at_boundary](int one, int other) {
    if (one == outside) at_boundary.insert(other);
    if (other == outside) at_boundary.insert(one);
  };
  for (const FlowPair& pair : problem.flows) note(pair.from, pair.to);
  for (const ExchangePair& pair : problem.exchanges) note(pair.one, pair.two);
  for (std::size_t s = 0; s < problem.systems.size(); ++s) {
    if (!problem.systems[s].simulated) continue;
    const auto system = static_cast<std::int32_t>(s + 1);
    const auto where = [&](int segment) {
      const bool known = segment >= 0 && segment < static_cast<int>(problem.segments.size());
      const auto at = static_cast<std::size_t>(segment);
      return text(problem.systems[s].name, " in segment ",
                  known ? numbered(problem.segments[at], at) : text(segment + 1));
    };
    const std::int32_t boundaries = host.count("NOBC", system), loads = host.count("NOWK", system);
    for (std::int32_t k = 1; k <= boundaries; ++k)
      if (const int segment = host.integer("IBC", system, k) - 1; at_boundary.contains(segment))
        reader.read_array(
            "NBFP", "ALLBOUNDFUNC", [&] { return "the boundary of " + where(segment); }, system, k);
    for (std::int32_t k = 1; k <= loads; ++k) {
      const int segment = host.integer("IWK", system, k) - 1;
      reader.read_array(
          "NBWK", "ALLLOADFUNC", [&] { return "the load of " + where(segment); }, system, k);
    }
  }
}

// Functions that drive a pair. pairs: flow or exchange pairs, whose elements name function and field.
template <class Pair>
void read_functions(Host& host, const std::vector<Pair>& pairs, std::size_t elements, bool flows, PointReader& reader) {
  std::set<std::size_t> used;
  for (const Pair& pair : pairs)
    if (pair.element < elements) used.insert(pair.element); // the elements after these belong to a hydrodynamic file
  for (const std::size_t element : used) {
    const auto function = static_cast<std::int32_t>(element / fields_per_function + 1);
    const auto field = static_cast<std::int32_t>(element % fields_per_function + 1);
    const auto name = [&] {
      return text(flows ? "the flow function " : "the exchange function ",
                  host.string(flows ? "FLOWFUNCDESC" : "EXCHANGEFUNCDESC", field, function), " (", function,
                  " of field ", field, ")");
    };
    reader.read_points(flows ? "NBRKQ" : "NOBRKS", flows ? "NOQFUNC" : "NORFUNC", name, field, function);
  }
}

} // namespace

std::vector<double> read_point_days(Host& host, const Problem& problem, const Forcing& forcing, double days) {
  PointReader reader(host, days);
  read_time_functions(host, reader);
  read_loads_and_boundaries(host, problem, reader);
  read_functions(host, problem.flows, forcing.flows.size(), true, reader);
  read_functions(host, problem.exchanges, forcing.exchanges.size(), false, reader);
  return reader.take_days();
}

} // namespace reference_engine
