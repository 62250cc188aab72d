#include "script/export_notes.h"

#include "core/forcing.h"
#include "core/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace reference_engine {

namespace {

using Item = std::int32_t;
constexpr Item flow_fields = 6, exchange_fields = 2;
// Compared bit by bit, since a series may contain not-a-number too.
constexpr std::uint32_t untouched = 0x7fc5ee0d;

// A kind of series, by the keywords that read its points.
struct SeriesKind {
  const char* points;
  const char* point;
};

// Interpolation has no keyword, so the front end is asked for each series' value between two of its points: a linear
// series is then between their values, a step series still has the first.
class Probe {
public:
  explicit Probe(Host& host) : host_(host) {
    const auto cells = static_cast<std::size_t>(host.count("NUMSEG")) * static_cast<std::size_t>(host.count("NUMSYS"));
    functions_.resize(256);
    loads_.resize(cells);
    boundaries_.resize(cells);
    flows_.assign(field_elements("NINQ", flow_fields), std::bit_cast<float>(untouched));
    exchanges_.assign(field_elements("NTEX", exchange_fields), std::bit_cast<float>(untouched));
    lend("ALLTFDATA", functions_);
    lend("ALLLOADDATA", loads_);
    lend("ALLBCDATA", boundaries_);
    lend("ALLFLOWDATA", flows_);
    lend("ALLEXCHANGEDATA", exchanges_);
  }

  // Asks for the values of all series in one forward sweep. The front end's cursors never go back, so a time before one
  // already asked for would be answered from the wrong points.
  void ask() {
    note_time_functions();
    note_records("load", "NOWK", "IWK", {"NBWK", "LOADFUNC"}, loads_);
    note_records("boundary", "NOBC", "IBC", {"NBFP", "BOUNDFUNC"}, boundaries_);
    note_fields("flow", flow_fields, "NINQ", {"NBRKQ", "NOQFUNC"}, flows_);
    note_fields("exchange", exchange_fields, "NTEX", {"NOBRKS", "NORFUNC"}, exchanges_);
    if (questions_.empty()) questions_[0]; // any time shows which fields are in use
    for (auto& [days, series] : questions_) {
      host_.stop_if_cancelled();
      float moment = days;
      host_.put("DAYS", Host::Arguments{&moment});
      for (Series& it : series) // the value of a field that is not in use stays not-a-number
        if (std::abs(*it.value - it.first) < std::abs(*it.value - (it.first + it.second) / 2))
          step_series_.push_back(std::move(it.name));
    }
  }

  // After `ask`.
  const std::vector<std::string>& step_series() const { return step_series_; }
  // Fields that have functions but are not written by the front end. After `ask`.
  std::vector<std::string> unused_fields() {
    std::vector<std::string> names;
    const auto look = [&](const char* what, Item fields, const char* count, const std::vector<float>& values) {
      for (Item field = 1; field <= fields; ++field)
        if (host_.count(count, field) > 0 &&
            std::bit_cast<std::uint32_t>(values[static_cast<std::size_t>(field - 1)]) == untouched)
          names.push_back(text(what, " field ", field));
    };
    look("flow", flow_fields, "NINQ", flows_);
    look("exchange", exchange_fields, "NTEX", exchanges_);
    return names;
  }

private:
  struct Series {
    std::string name;
    float first, second;
    const float* value;
  };

  std::size_t field_elements(const char* count, Item fields) {
    Item most = 0;
    for (Item field = 1; field <= fields; ++field) most = std::max(most, host_.count(count, field));
    return static_cast<std::size_t>(most) * fields_per_function;
  }
  void lend(const char* keyword, std::vector<float>& values) {
    if (!values.empty()) host_.put(keyword, Host::Arguments{values.data()});
  }

  // Finds the first two points with different values and a time between them.
  template <class... Parent>
  void note(std::string name, SeriesKind kind, const float* value, Parent... parents) {
    const Item count = host_.count(kind.points, parents...);
    Item indices[] = {parents..., 0};
    float days[2] = {}, values[2] = {};
    for (Item point = 1; point <= count; ++point) {
      days[0] = days[1];
      values[0] = values[1];
      Host::Arguments arguments{};
      for (std::size_t k = 0; k < sizeof...(Parent); ++k) arguments[k] = &indices[k];
      indices[sizeof...(Parent)] = point;
      arguments[sizeof...(Parent)] = &indices[sizeof...(Parent)];
      arguments[sizeof...(Parent) + 1] = &days[1];
      arguments[sizeof...(Parent) + 2] = &values[1];
      host_.get(kind.point, arguments);
      const float between = days[0] + (days[1] - days[0]) / 2;
      if (point == 1 || values[0] == values[1] || !(between > days[0] && between < days[1])) continue;
      questions_[between].push_back({std::move(name), values[0], values[1], value});
      return;
    }
  }

  void note_time_functions() {
    const Item count = host_.count("NUMTF");
    for (Item k = 1; k <= count; ++k) {
      const Item isc = host_.integer("TFISC", k);
      if (isc < 1 || isc > static_cast<Item>(functions_.size())) continue;
      note(host_.string("TFDESC", k), {"NBRKTF", "BRKTF"}, &functions_[static_cast<std::size_t>(isc - 1)], k);
    }
  }

  // If two records are on one segment, the array holds the later one, so only the last is asked for.
  void note_records(const char* what, const char* count, const char* segment_of, SeriesKind kind,
                    const std::vector<float>& values) {
    const Item systems = host_.count("NUMSYS");
    for (Item s = 1; s <= systems; ++s) {
      std::map<Item, Item> last; // record by segment
      const Item records = host_.count(count, s);
      for (Item k = 1; k <= records; ++k) last[host_.integer(segment_of, s, k)] = k;
      for (const auto& [segment, record] : last) {
        const auto cell =
            static_cast<std::size_t>(segment - 1) * static_cast<std::size_t>(systems) + static_cast<std::size_t>(s - 1);
        if (segment < 1 || cell >= values.size()) continue;
        note(text(what, " of ", host_.string("SYSNAME", s), " in segment ", segment, " (",
                  host_.string("SEGNAME", segment), ")"),
             kind, &values[cell], s, record);
      }
    }
  }

  void note_fields(const char* what, Item fields, const char* count, SeriesKind kind,
                   const std::vector<float>& values) {
    for (Item field = 1; field <= fields; ++field) {
      const Item functions = host_.count(count, field);
      for (Item k = 1; k <= functions; ++k) {
        const auto element =
            static_cast<std::size_t>(k - 1) * fields_per_function + static_cast<std::size_t>(field - 1);
        note(text(what, " function ", k, " of field ", field), kind, &values[element], field, k);
      }
    }
  }

  Host& host_;
  std::vector<float> functions_, loads_, boundaries_, flows_, exchanges_;
  std::map<float, std::vector<Series>> questions_; // by the time to ask for
  std::vector<std::string> step_series_;
};

std::vector<std::string> systems_not_simulated(Host& host) {
  std::vector<std::string> names;
  const Item count = host.count("NUMSYS");
  for (Item s = 1; s <= count; ++s)
    if (host.integer("GSYSPASS", s) != 0) names.push_back(host.string("SYSNAME", s));
  return names;
}

std::vector<std::string> empty_time_functions(Host& host) {
  std::vector<std::string> names;
  const Item count = host.count("NUMTF");
  for (Item k = 1; k <= count; ++k)
    if (host.integer("NBRKTF", k) == 0) names.push_back(host.string("TFDESC", k));
  return names;
}

// "what: a, b, c and 12 more."
void report(Host& host, const char* what, const std::vector<std::string>& names) {
  if (names.empty()) return;
  constexpr std::size_t most = 5;
  std::string line = what;
  for (std::size_t k = 0; k < std::min(names.size(), most); ++k) line += text(k == 0 ? ": " : ", ", names[k]);
  if (names.size() > most) line += text(" and ", names.size() - most, " more");
  host.info(line + ".");
}

} // namespace

void report_what_is_left_out(Host& host) {
  Probe probe(host);
  probe.ask();
  report(host, "Unused fields become used", probe.unused_fields());
  report(host, "Step series become linear", probe.step_series());
  report(host, "Systems that are constant come back bypassed, as do those that are", systems_not_simulated(host));
  report(host, "Time functions in use without points come back unused", empty_time_functions(host));
}

} // namespace reference_engine
