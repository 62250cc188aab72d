#include "shell/bulk/bulk_series.h"

#include <cstdint>
#include <utility>

namespace vesk {

namespace {

// Transport fields in a row of the engine's flow and exchange arrays, independent of the data set.
constexpr std::size_t engine_field_count = 6;

// The 0-based segment and the system number of a load or boundary.
std::pair<std::int32_t, std::uint32_t> segment_and_system(const prevesk_dataset_data_type& data,
                                                          const series_ref& series) {
  const system_data_type& system = data.systems[series.owner];
  const std::int32_t segment =
      series.kind == series_kind::load ? system.loads[series.index].segment : system.boundaries[series.index].segment;
  return {segment, system.isc};
}

// The position in the engine's arrays of segments by systems.
std::optional<std::size_t> segment_element(const prevesk_dataset_data_type& data, const series_ref& series) {
  const auto [segment, number] = segment_and_system(data, series);
  const auto systems = static_cast<std::int64_t>(data.systems.size());
  const std::int64_t element = segment * systems + std::int64_t{number} - 1;
  const bool inside =
      segment >= 0 && element >= 0 && element < static_cast<std::int64_t>(data.segments.size()) * systems;
  return inside ? std::optional(static_cast<std::size_t>(element)) : std::nullopt;
}

std::string segment_warning(const prevesk_dataset_data_type& data, const char* name, const series_ref& series) {
  const auto [segment, number] = segment_and_system(data, series);
  const bool named = segment >= 0 && static_cast<std::size_t>(segment) < data.segments.size();
  return "WARNING: A " + std::string(name) + " at segment " + std::to_string(std::int64_t{segment} + 1) +
         (named ? " (" + data.segments[static_cast<std::size_t>(segment)].name.str() + ")" : "") + " of system " +
         std::to_string(number) + " is outside the model and is ignored.";
}

std::string field_warning(const char* name, std::size_t field) {
  return "WARNING: " + std::string(name) + " field " + std::to_string(field + 1) +
         " is beyond the six fields of the engine and is ignored.";
}

} // namespace

namespace detail {

series_kind kind_of(bulk_stage stage) {
  switch (stage) {
  case bulk_stage::time_functions: return series_kind::time_function;
  case bulk_stage::loads: return series_kind::load;
  case bulk_stage::boundary_conditions: return series_kind::boundary;
  case bulk_stage::flows: return series_kind::flow_function;
  case bulk_stage::exchanges: return series_kind::exchange_function;
  case bulk_stage::print_interval: break;
  }
  return series_kind::print_intervals;
}

std::optional<bulk_element> element_of(const prevesk_dataset_data_type& data, const series_ref& series) {
  bulk_element element{series, 0, interpolation_of(data, series) != interpolation_linear, true};
  switch (series.kind) {
  case series_kind::time_function: {
    const time_function_data_type& function = data.time_functions[series.index];
    if (function.isc == 0) return std::nullopt;
    element.index = function.isc - 1;
    element.used = function.used;
    return element;
  }
  case series_kind::load:
  case series_kind::boundary: {
    const std::optional<std::size_t> index = segment_element(data, series);
    if (!index) return std::nullopt;
    element.index = *index;
    return element;
  }
  case series_kind::exchange_function:
  case series_kind::flow_function: element.index = series.index * engine_field_count + series.owner; return element;
  default: return element;
  }
}

bool is_unused_field(const prevesk_dataset_data_type& data, series_kind kind, std::size_t owner) {
  if (kind == series_kind::exchange_function) return !data.exchange_fields[owner].used;
  return kind == series_kind::flow_function && !data.flow_fields[owner].used;
}

bool is_field_too_many(series_kind kind, std::size_t owner) {
  return (kind == series_kind::exchange_function || kind == series_kind::flow_function) && owner >= engine_field_count;
}

} // namespace detail

std::string left_out_warning(const prevesk_dataset_data_type& data, const series_ref& left_out) {
  switch (left_out.kind) {
  case series_kind::load: return segment_warning(data, "load", left_out);
  case series_kind::boundary: return segment_warning(data, "boundary condition", left_out);
  case series_kind::exchange_function: return field_warning("Exchange", left_out.owner);
  case series_kind::flow_function: return field_warning("Flow", left_out.owner);
  default: break;
  }
  return "WARNING: Time function " + std::to_string(left_out.index + 1) + ", \"" +
         data.time_functions[left_out.index].description.str() + "\", has no ISC number and is ignored.";
}

} // namespace vesk
