// How keywords find the records that they read and write.
//
// A place turns a keyword's leading indices into one record of the data set: `find<false>` for reading, which keeps
// shared memory shared, and `find<true>` for changing. Null if there is no such record; a line is then in the log. A
// pointer is valid until the data set is next copied or changed.
#pragma once

#include "shell/shell_interface.h"

namespace vesk::place {

template <bool Edit, class List>
auto* item(List& list, std::size_t i) {
  if constexpr (Edit)
    return &list.edit(i);
  else
    return &list[i];
}

// Item `number`, as counted by the engine, passed in the keyword's argument number `argument`.
template <bool Edit, class List>
auto item_at(const shell_interface& shell, List& list, std::int32_t number, std::size_t argument) {
  const auto i = shell.position(number, list.size(), argument);
  return i ? item<Edit>(list, *i) : nullptr;
}

// The item found by a lookup.
template <bool Edit, class List>
auto item_found(List& list, std::optional<std::size_t> i) {
  return i ? item<Edit>(list, *i) : nullptr;
}

struct the_data_set {
  static constexpr std::size_t indices = 0;
  template <bool Edit>
  static auto* find(const shell_interface& shell) {
    return &shell.data_set();
  }
};

template <auto Member>
struct member_of_data_set {
  static constexpr std::size_t indices = 0;
  template <bool Edit>
  static auto* find(const shell_interface& shell) {
    return &(shell.data_set().*Member);
  }
};
using time_steps = member_of_data_set<&prevesk_dataset_data_type::time_steps>;
using print_intervals = member_of_data_set<&prevesk_dataset_data_type::print_intervals>;

struct segment {
  static constexpr std::size_t indices = 1;
  template <bool Edit>
  static auto* find(const shell_interface& shell, std::int32_t segment_index) {
    return item_at<Edit>(shell, shell.data_set().segments, segment_index, 0);
  }
};

// By its own number; a wrong number gives the first system.
struct nth_system {
  static constexpr std::size_t indices = 1;
  template <bool Edit>
  static auto* find(const shell_interface& shell, std::int32_t system_index) {
    return item_found<Edit>(shell.data_set().systems, shell.get_nth_system(system_index));
  }
};

// A load or a boundary of a system.
template <auto Records>
struct record_of_system {
  static constexpr std::size_t indices = 2;
  template <bool Edit>
  static auto find(const shell_interface& shell, std::int32_t system_index, std::int32_t function_index) {
    auto* system = nth_system::find<Edit>(shell, system_index);
    return system ? item_at<Edit>(shell, system->*Records, function_index, 1) : nullptr;
  }
};
using boundary_of_system = record_of_system<&system_data_type::boundaries>;
using load_of_system = record_of_system<&system_data_type::loads>;

// By position among the items switched on for a GET, by ISC number among all items for a PUT.
template <auto List, auto ByPosition, auto ByIsc>
struct catalogue_item {
  static constexpr std::size_t indices = 1;
  template <bool Edit>
  static auto* find(const shell_interface& shell, std::int32_t number) {
    return item_found<Edit>(shell.data_set().*List, (shell.*(Edit ? ByIsc : ByPosition))(number));
  }
};
using time_function = catalogue_item<&prevesk_dataset_data_type::time_functions, //
                                     &shell_interface::get_nth_time_function,    //
                                     &shell_interface::get_time_function_by_isc>;
using parameter = catalogue_item<&prevesk_dataset_data_type::parameters, //
                                 &shell_interface::get_nth_parameter,    //
                                 &shell_interface::get_parameter_by_isc>;
using output_parameter = catalogue_item<&prevesk_dataset_data_type::output_controls, //
                                        &shell_interface::get_nth_output_parameter,  //
                                        &shell_interface::get_output_parameter_by_isc>;
using csv_output_parameter = catalogue_item<&prevesk_dataset_data_type::output_controls,    //
                                            &shell_interface::get_nth_csv_output_parameter, //
                                            &shell_interface::get_output_parameter_by_isc>;

struct constant {
  static constexpr std::size_t indices = 1;
  template <bool Edit>
  static auto find(const shell_interface& shell, std::int32_t number) {
    const auto at = Edit ? shell.get_constant_by_isc(number) : shell.get_nth_constant(number);
    auto& groups = shell.data_set().constant_groups;
    return at ? item<Edit>(item<Edit>(groups, at->group)->constants, at->constant) : nullptr;
  }
};

struct exchange_field {
  static constexpr std::size_t indices = 1;
  template <bool Edit>
  static auto* find(const shell_interface& shell, std::int32_t field_index) {
    return item_found<Edit>(shell.data_set().exchange_fields, shell.get_nth_exchange_field(field_index));
  }
};

struct flow_field {
  static constexpr std::size_t indices = 1;
  template <bool Edit>
  static auto* find(const shell_interface& shell, std::int32_t field_index) {
    return item_found<Edit>(shell.data_set().flow_fields, shell.get_nth_flow_field(field_index));
  }
};

template <class Field>
struct function_of {
  static constexpr std::size_t indices = 2;
  template <bool Edit>
  static auto find(const shell_interface& shell, std::int32_t field_index, std::int32_t function_index) {
    auto* field = Field::template find<Edit>(shell, field_index);
    return field ? item_at<Edit>(shell, field->functions, function_index, 1) : nullptr;
  }
};
using exchange_function = function_of<exchange_field>;
using flow_function = function_of<flow_field>;

template <class Function>
struct pair_of {
  static constexpr std::size_t indices = 3;
  template <bool Edit>
  static auto find(const shell_interface& shell, std::int32_t field_index, std::int32_t function_index,
                   std::int32_t pair_index) {
    auto* function = Function::template find<Edit>(shell, field_index, function_index);
    return function ? item_at<Edit>(shell, function->pairs, pair_index, 2) : nullptr;
  }
};
using exchange_pair = pair_of<exchange_function>;
using flow_pair = pair_of<flow_function>;

} // namespace vesk::place
