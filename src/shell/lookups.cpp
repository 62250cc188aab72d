// From the engine's counting to positions in the data set. All searches are linear and nothing is cached, because an
// import switches items on as it goes.
#include "shell/shell_interface.h"

#include <string>

namespace vesk {

namespace {

// The log lines of one search. Does nothing without a log.
class search_log {
public:
  search_log(const shell_interface& shell, const char* label, std::int32_t number)
      : shell_(shell), label_(label), number_(number) {
    if (shell_.logs()) shell_.log(head() + ") SEARCHING...");
  }
  void not_found(const char* ending = "") const {
    if (shell_.logs()) shell_.log(head() + ") NOT FOUND" + ending);
  }

private:
  std::string head() const { return std::string(label_) + "(" + std::to_string(number_); }

  const shell_interface& shell_;
  const char* label_;
  std::int32_t number_;
};

template <class Found>
std::optional<Found> answer(const search_log& log, std::optional<Found> found) {
  if (!found) log.not_found();
  return found;
}

// The position of item number `place`, from 0, among those with the flag set.
template <class List, class Flag>
std::optional<std::size_t> nth_with(const List& list, Flag flag, std::int64_t place) {
  for (std::size_t i = 0; i < list.size(); ++i)
    if (list[i].*flag && place-- == 0) return i;
  return {};
}

template <class List>
std::optional<std::size_t> with_isc(const List& list, std::int32_t isc) {
  for (std::size_t i = 0; i < list.size(); ++i)
    if (list[i].isc == static_cast<std::uint32_t>(isc)) return i;
  return {};
}

// The first constant, in all groups, for which `wanted` is true.
template <class Wanted>
std::optional<constant_position> find_constant(const prevesk_dataset_data_type& data, Wanted wanted) {
  for (std::size_t g = 0; g < data.constant_groups.size(); ++g) {
    const auto& constants = data.constant_groups[g].constants;
    for (std::size_t i = 0; i < constants.size(); ++i)
      if (wanted(constants[i])) return constant_position{g, i};
  }
  return {};
}

std::int64_t place_of(const shell_interface& shell, std::int32_t n) {
  return std::int64_t{n} - shell.index_base;
}

template <class List>
std::optional<std::size_t> by_position(const shell_interface& shell, const List& list, std::int32_t n) {
  const std::int64_t place = place_of(shell, n);
  if (place < 0 || place >= static_cast<std::int64_t>(list.size())) return {};
  return static_cast<std::size_t>(place);
}

std::string pair_text(const char* label, const char* first, std::int32_t one, const char* second, std::int32_t two,
                      const char* ending) {
  return std::string(label) + "(" + first + " = " + std::to_string(one) + ", " + second + " = " + std::to_string(two) +
         ") " + ending;
}

} // namespace

std::optional<constant_position> shell_interface::get_nth_constant(std::int32_t n) const {
  const search_log log(*this, "get_nth_constant", n);
  std::int64_t place = place_of(*this, n);
  return answer(log, find_constant(data_set(), [&](const auto& c) { return c.used && place-- == 0; }));
}

std::optional<std::size_t> shell_interface::get_nth_time_function(std::int32_t n) const {
  const search_log log(*this, "get_nth_time_function", n);
  return answer(log, nth_with(data_set().time_functions, &time_function_data_type::used, place_of(*this, n)));
}

std::optional<std::size_t> shell_interface::get_nth_parameter(std::int32_t n) const {
  const search_log log(*this, "get_nth_parameter", n);
  return answer(log, nth_with(data_set().parameters, &parameter_data_type::used, place_of(*this, n)));
}

std::optional<std::size_t> shell_interface::get_nth_output_parameter(std::int32_t n) const {
  const search_log log(*this, "get_nth_output_parameter", n);
  return answer(log, nth_with(data_set().output_controls, &output_control_type::enabled, place_of(*this, n)));
}

std::optional<std::size_t> shell_interface::get_nth_csv_output_parameter(std::int32_t n) const {
  const search_log log(*this, "get_nth_csv_output_parameter", n);
  return answer(log, nth_with(data_set().output_controls, &output_control_type::csv_enabled, place_of(*this, n)));
}

std::optional<std::size_t> shell_interface::get_nth_exchange_field(std::int32_t n) const {
  const search_log log(*this, "get_nth_exchange_field", n);
  return answer(log, by_position(*this, data_set().exchange_fields, n));
}

std::optional<std::size_t> shell_interface::get_nth_flow_field(std::int32_t n) const {
  const search_log log(*this, "get_nth_flow_field", n);
  return answer(log, by_position(*this, data_set().flow_fields, n));
}

std::optional<constant_position> shell_interface::get_constant_by_isc(std::int32_t isc) const {
  const search_log log(*this, "get_constant_by_isc", isc);
  const auto number = static_cast<std::uint32_t>(isc);
  return answer(log, find_constant(data_set(), [&](const auto& c) { return c.isc == number; }));
}

std::optional<std::size_t> shell_interface::get_parameter_by_isc(std::int32_t isc) const {
  const search_log log(*this, "get_parameter_by_isc", isc);
  return answer(log, with_isc(data_set().parameters, isc));
}

std::optional<std::size_t> shell_interface::get_time_function_by_isc(std::int32_t isc) const {
  const search_log log(*this, "get_time_function_by_isc", isc);
  return answer(log, with_isc(data_set().time_functions, isc));
}

std::optional<std::size_t> shell_interface::get_output_parameter_by_isc(std::int32_t isc) const {
  const search_log log(*this, "get_output_parameter_by_isc", isc);
  return answer(log, with_isc(data_set().output_controls, isc));
}

std::size_t shell_interface::get_actual_system_index(std::int32_t system) const {
  const search_log log(*this, "get_actual_system_index", system);
  const auto found = with_isc(data_set().systems, system);
  if (!found) log.not_found(" - DEFAULTING TO ZERO");
  return found.value_or(0);
}

std::optional<std::size_t> shell_interface::get_nth_system(std::int32_t n) const {
  const search_log log(*this, "get_nth_system", n);
  const std::size_t position = get_actual_system_index(n);
  return answer(log, position < data_set().systems.size() ? std::optional(position) : std::nullopt);
}

// The three functions below have their own log lines. The different labels for entry and failure are part of the log
// format.

std::optional<segment_item_position> shell_interface::get_nth_segment_parameter(std::int32_t segment_index,
                                                                                std::int32_t param_index) const {
  constexpr const char* label = "get_nth_segment_parameter";
  if (logs()) log(pair_text(label, "segment_index", segment_index, "param_index", param_index, "SEARCHING..."));
  const auto item = nth_with(data_set().parameters, &parameter_data_type::used, place_of(*this, param_index));
  if (item) {
    const auto segment = position(segment_index, data_set().segments.size(), 0);
    if (!segment) return {};
    if (*item < data_set().segments[*segment].parameters.size()) return segment_item_position{*segment, *item};
  }
  if (logs()) log(pair_text(label, "segment_index", segment_index, "parameter_index", param_index, "NOT FOUND"));
  return {};
}

std::optional<segment_item_position> shell_interface::get_segment_parameter_by_isc(std::int32_t segment_index,
                                                                                   std::int32_t isc) const {
  if (logs()) log("get_segment_parameter_by_isc(" + std::to_string(isc) + ") SEARCHING...");
  if (const auto item = with_isc(data_set().parameters, isc)) {
    const auto segment = position(segment_index, data_set().segments.size(), 0);
    if (!segment) return {};
    if (*item < data_set().segments[*segment].parameters.size()) return segment_item_position{*segment, *item};
  }
  if (logs())
    log(pair_text("get_segment_parameter_by_param_isc", "segment_index", segment_index, "isc_number", isc,
                  "NOT FOUND"));
  return {};
}

std::optional<segment_item_position> shell_interface::get_nth_segment_system(std::int32_t segment_index,
                                                                             std::int32_t system_index) const {
  constexpr const char* label = "get_nth_segment_system";
  if (logs()) log(pair_text(label, "segment_index", segment_index, "system_index", system_index, "SEARCHING..."));
  const std::size_t item = get_actual_system_index(system_index);
  const auto segment = position(segment_index, data_set().segments.size(), 1);
  if (!segment) return {};
  if (item < data_set().segments[*segment].systems.size()) return segment_item_position{*segment, item};
  if (logs()) log(pair_text(label, "segment_index", segment_index, "system_index", system_index, "NOT FOUND"));
  return {};
}

} // namespace vesk
