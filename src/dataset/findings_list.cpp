#include "dataset/findings_list.h"

#include "dataset/findings.h"
#include "dataset/series_identity.h"
#include "dataset/text_encoding.h"
#include "platform/counted.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace vesk {

namespace {

// Collects the lines. What many places have in common is one line: the first of them, and how many there are.
class finding_lines {
public:
  std::vector<std::string> lines;

  void add(const std::string& place, const std::string& sentence) {
    if (!sentence.empty()) lines.push_back(place + ": " + sentence);
  }
  // `finding(i)` for each of `count` places; `place(i)` names one, `what` is the word for it.
  template <class Finding, class Place>
  void add_first(std::size_t count, std::string_view what, const Finding& finding, const Place& place) {
    std::size_t found = 0;
    for (std::size_t i = 0; i < count; ++i)
      if (const std::string sentence = finding(i); !sentence.empty() && found++ == 0) add(place(i), sentence);
    if (found > 1) lines.back() += " " + counted(found, what) + " in all.";
  }
};

std::string name_of(const prevesk_dataset_data_type& data, const series_ref& ref) {
  std::string name = series_name(data, ref);
  switch (ref.kind) {
  case series_kind::time_function: return "Time function " + name;
  case series_kind::load: return "Load, " + name;
  case series_kind::boundary: return "Boundary, " + name;
  case series_kind::exchange_function: return "Exchanges, " + name;
  case series_kind::flow_function: return "Flows, " + name;
  default: return name;
  }
}

std::string segment_finding(const prevesk_dataset_data_type& data, const series_ref& ref) {
  if (ref.kind != series_kind::load && ref.kind != series_kind::boundary) return {};
  const system_data_type& system = data.systems[ref.owner];
  const std::int32_t segment =
      ref.kind == series_kind::load ? system.loads[ref.index].segment : system.boundaries[ref.index].segment;
  if (segment >= 0 && static_cast<std::size_t>(segment) < data.segments.size()) return {};
  return missing_segment_finding(segment);
}

void list_series(const prevesk_dataset_data_type& data, const series_ref& ref, finding_lines& found) {
  if (!is_used(data, ref)) return;
  const stored_series& series = *find_series(data, ref);
  const auto name = [&] { return name_of(data, ref); };
  if (const std::string sentence = segment_finding(data, ref); !sentence.empty()) found.add(name(), sentence);
  if (const std::string sentence = series_finding(data, ref); !sentence.empty()) found.add(name(), sentence);
  found.add_first(
      series.points.size(), "row", [&](std::size_t row) { return check_point(series, ref, row).sentence; },
      [&](std::size_t row) { return name() + ", row " + std::to_string(row + 1); });
}

std::pair<std::int32_t, std::int32_t> ends(const exchange_pair_record_type& pair) {
  return {pair.segment_one, pair.segment_two};
}
std::pair<std::int32_t, std::int32_t> ends(const flow_pair_record_type& pair) {
  return {pair.from_segment, pair.to_segment};
}

template <class Fields>
void list_pairs(const prevesk_dataset_data_type& data, const Fields& fields, series_kind kind, finding_lines& found) {
  for (std::size_t f = 0; f < fields.size(); ++f) {
    const char* const window = kind == series_kind::flow_function ? "Flows, " : "Exchanges, ";
    found.add(window + shown_text(fields[f].description), field_finding(fields[f]));
    for (std::size_t i = 0; fields[f].used && i < fields[f].functions.size(); ++i) {
      const auto& pairs = fields[f].functions[i].pairs;
      found.add_first(
          pairs.size(), "pair",
          [&](std::size_t p) {
            const auto [one, two] = ends(pairs[p]);
            const std::string sentence = pair_end_finding(one, two, data.segments.size());
            return sentence.empty() ? pair_end_finding(two, one, data.segments.size()) : sentence;
          },
          [&](std::size_t p) {
            return name_of(data, {kind, f, i}) + ", pair " + std::to_string(p + 1);
          });
    }
  }
}

void list_values(const prevesk_dataset_data_type& data, finding_lines& found) {
  for (const constant_group_data_type& group : data.constant_groups)
    for (const constant_data_type& constant : group.constants)
      if (constant.used)
        found.add("Constant " + shown_text(constant.description),
                  range_finding(constant.value, constant.minimum, constant.maximum));
  const auto segment = [&](std::size_t i) {
    return ", segment " + std::to_string(i + 1) + " (" + shown_text(data.segments[i].name) + ")";
  };
  for (std::size_t p = 0; p < data.parameters.size(); ++p) {
    const parameter_data_type& parameter = data.parameters[p];
    if (!parameter.used) continue;
    found.add_first(
        data.segments.size(), "segment",
        [&](std::size_t i) {
          const auto& values = data.segments[i].parameters.values();
          return p < values.size() ? range_finding(values[p], parameter.minimum, parameter.maximum) : std::string();
        },
        [&](std::size_t i) { return "Parameter " + shown_text(parameter.description) + segment(i); });
  }
}

} // namespace

std::vector<std::string> list_findings(const prevesk_dataset_data_type& data) {
  finding_lines found;
  list_values(data, found);
  list_pairs(data, data.exchange_fields, series_kind::exchange_function, found);
  list_pairs(data, data.flow_fields, series_kind::flow_function, found);
  for_each_series(data, [&](const series_ref& ref) { list_series(data, ref, found); });
  return std::move(found.lines);
}

} // namespace vesk
