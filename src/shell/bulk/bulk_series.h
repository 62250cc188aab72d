// The series of each stage of an update, in list order, and the element of the engine's array that each one fills.
#pragma once

#include "shell/bulk/bulk_service.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vesk {

// Transport fields in a row of the engine's flow and exchange arrays, whatever the data set has.
inline constexpr std::size_t engine_field_count = 6;

struct bulk_element {
  std::size_t index; // in the engine's array
  bool step;         // interpolated as steps
  bool used;         // false: the element gets 0.0 and the series is not evaluated
};

namespace detail {

template <class Visit, class Outside>
void visit_time_functions(prevesk_dataset_data_type& data, Visit&& visit, Outside&& outside) {
  for (std::size_t i = 0; i < data.time_functions.size(); ++i) {
    const time_function_data_type& function = data.time_functions[i];
    if (function.isc == 0) {
      outside([&] {
        return "WARNING: Time function " + std::to_string(i + 1) + ", \"" + function.description.str() +
               "\", has no ISC number and is left out.";
      });
      continue;
    }
    visit(bulk_element{function.isc - 1, function.interpolation_type != interpolation_linear, function.used}, function,
          [&]() -> time_function_data_type& { return data.time_functions.edit(i); });
  }
}

// `list` is system_data_type::loads or ::boundaries; `name` is what one of its records is called.
template <class List, class Visit, class Outside>
void visit_systems(prevesk_dataset_data_type& data, List system_data_type::*list, const char* name, Visit&& visit,
                   Outside&& outside) {
  const auto systems = static_cast<std::int64_t>(data.systems.size());
  const auto elements = static_cast<std::int64_t>(data.segments.size()) * systems;
  for (std::size_t s = 0; s < data.systems.size(); ++s)
    for (std::size_t i = 0; i < (data.systems[s].*list).size(); ++i) {
      const auto& record = (data.systems[s].*list)[i];
      const std::int64_t number = data.systems[s].isc;
      const std::int64_t element = record.segment * systems + number - 1;
      if (record.segment < 0 || element < 0 || element >= elements) {
        outside([&] {
          const bool named = record.segment >= 0 && static_cast<std::size_t>(record.segment) < data.segments.size();
          return "WARNING: A " + std::string(name) + " at segment " + std::to_string(std::int64_t{record.segment} + 1) +
                 (named ? " (" + data.segments[static_cast<std::size_t>(record.segment)].name.str() + ")" : "") +
                 " of system " + std::to_string(number) + " lies outside the model and is left out.";
        });
        continue;
      }
      visit(
          bulk_element{static_cast<std::size_t>(element), record.interpolation_type != interpolation_linear, true},
          record, [&, s, i ]() -> auto& { return (data.systems.edit(s).*list).edit(i); });
    }
}

template <class Fields, class Visit, class Outside>
void visit_functions(Fields& fields, const char* name, Visit&& visit, Outside&& outside) {
  for (std::size_t f = 0; f < fields.size(); ++f) {
    if (!fields[f].used) continue;
    if (f >= engine_field_count) {
      outside([&] {
        return "WARNING: " + std::string(name) + " field " + std::to_string(f + 1) +
               " lies beyond the six fields of the engine and is left out.";
      });
      continue;
    }
    for (std::size_t i = 0; i < fields[f].functions.size(); ++i) {
      const auto& function = fields[f].functions[i];
      visit(
          bulk_element{i * engine_field_count + f, function.interpolation_type != interpolation_linear, true}, function,
          [&, f, i ]() -> auto& { return fields.edit(f).functions.edit(i); });
    }
  }
}

} // namespace detail

// Calls visit(element, record, edit) for each series of the stage. `record` is the series as it stands, readable until
// `edit` is called or the visit ends; edit() makes the record the data set's own and returns it for changing.
// outside(make_text) is called for what has no element in the engine's array; make_text() says so in a line.
template <class Visit, class Outside>
void visit_series(prevesk_dataset_data_type& data, bulk_stage stage, Visit&& visit, Outside&& outside) {
  switch (stage) {
  case bulk_stage::time_functions: return detail::visit_time_functions(data, visit, outside);
  case bulk_stage::loads: return detail::visit_systems(data, &system_data_type::loads, "load", visit, outside);
  case bulk_stage::boundary_conditions:
    return detail::visit_systems(data, &system_data_type::boundaries, "boundary condition", visit, outside);
  case bulk_stage::flows: return detail::visit_functions(data.flow_fields, "Flow", visit, outside);
  case bulk_stage::exchanges: return detail::visit_functions(data.exchange_fields, "Exchange", visit, outside);
  case bulk_stage::print_interval:
    return visit(bulk_element{0, true, true}, data.print_intervals,
                 [&]() -> print_interval_series& { return data.print_intervals; });
  }
}

// As above; what has no element is passed over.
template <class Visit>
void visit_series(prevesk_dataset_data_type& data, bulk_stage stage, Visit&& visit) {
  visit_series(data, stage, visit, [](auto&&) {});
}

} // namespace vesk
