#include "dataset/series_identity.h"

#include "dataset/text_encoding.h"

namespace vesk {

namespace {

std::array<std::string, 2> parts_of(const prevesk_dataset_data_type& data, const series_ref& ref) {
  const auto record = [&](const system_data_type& system, const auto& records) {
    return std::array{std::to_string(system.isc), std::to_string(records[ref.index].segment)};
  };
  const auto function = [&](const auto& field) {
    return std::array{field.description.str(), field.functions[ref.index].description.str()};
  };
  switch (ref.kind) {
  case series_kind::time_function: return {std::to_string(data.time_functions[ref.index].isc), {}};
  case series_kind::load: return record(data.systems[ref.owner], data.systems[ref.owner].loads);
  case series_kind::boundary: return record(data.systems[ref.owner], data.systems[ref.owner].boundaries);
  case series_kind::exchange_function: return function(data.exchange_fields[ref.owner]);
  case series_kind::flow_function: return function(data.flow_fields[ref.owner]);
  default: return {};
  }
}

// Whether they are the series' parts. Functions are compared without a copy of their names: there may be 100,000.
bool has_parts(const prevesk_dataset_data_type& data, const series_ref& ref, const std::array<std::string, 2>& parts) {
  const auto function = [&](const auto& field) {
    return field.description.str() == parts[0] && field.functions[ref.index].description.str() == parts[1];
  };
  switch (ref.kind) {
  case series_kind::exchange_function: return function(data.exchange_fields[ref.owner]);
  case series_kind::flow_function: return function(data.flow_fields[ref.owner]);
  default: return parts_of(data, ref) == parts;
  }
}

std::string record_name(const prevesk_dataset_data_type& data, const system_data_type& system, std::int32_t segment) {
  const bool exists = segment >= 0 && static_cast<std::size_t>(segment) < data.segments.size();
  const std::string name = exists ? shown_text(data.segments[static_cast<std::size_t>(segment)].name.str()) : "";
  return "Segment " + std::to_string(std::int64_t{segment} + 1) + " (" + name + "), " +
         shown_text(system.description.str());
}

template <class Field>
std::string function_name(const Field& field, std::size_t index) {
  return shown_text(field.description.str()) + " Function #" + std::to_string(index + 1);
}

} // namespace

series_identity identity_of(const prevesk_dataset_data_type& data, const series_ref& ref) {
  series_identity identity{ref.kind, parts_of(data, ref)};
  for_each_series(data, ref.kind, [&](const series_ref& one) {
    if (one == ref) identity.place = identity.count;
    if (has_parts(data, one, identity.parts)) ++identity.count;
  });
  return identity;
}

std::optional<series_ref> find_series(const prevesk_dataset_data_type& data, const series_identity& identity) {
  std::optional<series_ref> found;
  std::size_t count = 0;
  for_each_series(data, identity.kind, [&](const series_ref& one) {
    if (has_parts(data, one, identity.parts) && count++ == identity.place) found = one;
  });
  return count == identity.count ? found : std::nullopt;
}

std::string series_name(const prevesk_dataset_data_type& data, const series_ref& ref) {
  switch (ref.kind) {
  case series_kind::print_intervals: return "Print Interval";
  case series_kind::time_steps: return "Time Step";
  case series_kind::time_function: return shown_text(data.time_functions[ref.index].description.str());
  case series_kind::load:
    return record_name(data, data.systems[ref.owner], data.systems[ref.owner].loads[ref.index].segment);
  case series_kind::boundary:
    return record_name(data, data.systems[ref.owner], data.systems[ref.owner].boundaries[ref.index].segment);
  case series_kind::exchange_function: return function_name(data.exchange_fields[ref.owner], ref.index);
  case series_kind::flow_function: break;
  }
  return function_name(data.flow_fields[ref.owner], ref.index);
}

} // namespace vesk
