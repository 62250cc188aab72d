#include "runs/value_table.h"

#include <algorithm>
#include <utility>

namespace vesk {

namespace {

using data_set = prevesk_dataset_data_type;
using positions = value_positions;

std::size_t constant_count(const data_set& data) {
  std::size_t count = 0;
  for (const constant_group_data_type& group : data.constant_groups) count += group.constants.size();
  return count;
}

// Group and index within it of constant number `i` of all groups.
std::pair<std::size_t, std::size_t> place_of_constant(const data_set& data, std::size_t i) {
  std::size_t group = 0;
  while (i >= data.constant_groups[group].constants.size()) i -= data.constant_groups[group++].constants.size();
  return {group, i};
}

const constant_data_type& constant_at(const data_set& data, std::size_t i) {
  const auto [group, place] = place_of_constant(data, i);
  return data.constant_groups[group].constants[place];
}

std::string segment_name(const data_set& data, std::int32_t segment) {
  const auto at = static_cast<std::size_t>(segment);
  return segment >= 0 && at < data.segments.size() ? data.segments[at].name.str() : std::string();
}

// A list of the data set whose records have an ISC number and a description.
template <auto List>
constexpr numbered_list by_isc(std::string_view pattern, std::string_view noun) {
  return {.pattern = pattern,
          .noun = noun,
          .size = [](const data_set& d, const positions&) { return (d.*List).size(); },
          .name = [](const data_set& d, const positions&, std::size_t i) { return (d.*List)[i].description.str(); },
          .number = [](const data_set& d, const positions&, std::size_t i) { return std::int64_t{(d.*List)[i].isc}; }};
}

// The same for a segment's records for that list, in the same order.
template <auto List, auto Records>
constexpr numbered_list of_each_segment(std::string_view pattern, std::string_view noun) {
  numbered_list list = by_isc<List>(pattern, noun);
  list.size = [](const data_set& d, const positions& at) {
    return std::min((d.*List).size(), (d.segments[at[0]].*Records).size());
  };
  return list;
}

template <auto List>
constexpr numbered_list fields(std::string_view pattern, std::string_view noun) {
  return {.pattern = pattern,
          .noun = noun,
          .size = [](const data_set& d, const positions&) { return (d.*List).size(); },
          .name = [](const data_set& d, const positions&, std::size_t i) { return (d.*List)[i].description.str(); }};
}

template <auto List>
constexpr numbered_list functions(std::string_view pattern, std::string_view noun) {
  return {.pattern = pattern,
          .noun = noun,
          .size = [](const data_set& d, const positions& at) { return (d.*List)[at[0]].functions.size(); },
          .name = [](const data_set& d, const positions& at,
                     std::size_t i) { return (d.*List)[at[0]].functions[i].description.str(); }};
}

template <auto List>
constexpr numbered_list pairs(std::string_view pattern) {
  return {.pattern = pattern, .noun = "pair", .size = [](const data_set& d, const positions& at) {
            return (d.*List)[at[0]].functions[at[1]].pairs.size();
          }};
}

constexpr numbered_list lists[] = {
    {.pattern = "segment.#",
     .noun = "segment",
     .size = [](const data_set& d, const positions&) { return d.segments.size(); },
     .name = [](const data_set& d, const positions&, std::size_t i) { return d.segments[i].name.str(); }},
    {.pattern = "constant.#",
     .noun = "constant",
     .size = [](const data_set& d, const positions&) { return constant_count(d); },
     .name = [](const data_set& d, const positions&, std::size_t i) { return constant_at(d, i).description.str(); },
     .number = [](const data_set& d, const positions&, std::size_t i) { return std::int64_t{constant_at(d, i).isc}; }},
    by_isc<&data_set::parameters>("parameter.#", "parameter"),
    of_each_segment<&data_set::parameters, &segment_data_type::parameters>("segment.#.parameter.#", "parameter"),
    by_isc<&data_set::systems>("system.#", "system"),
    of_each_segment<&data_set::systems, &segment_data_type::systems>("segment.#.system.#", "system"),
    by_isc<&data_set::time_functions>("time_function.#", "time function"),
    {.pattern = "system.#.boundary.#",
     .noun = "boundary",
     .size = [](const data_set& d, const positions& at) { return d.systems[at[0]].boundaries.size(); },
     .name = [](const data_set& d, const positions& at,
                std::size_t i) { return segment_name(d, d.systems[at[0]].boundaries[i].segment); },
     .number = [](const data_set& d, const positions& at,
                  std::size_t i) { return std::int64_t{d.systems[at[0]].boundaries[i].segment}; }},
    {.pattern = "system.#.load.#",
     .noun = "load",
     .size = [](const data_set& d, const positions& at) { return d.systems[at[0]].loads.size(); },
     .name = [](const data_set& d, const positions& at,
                std::size_t i) { return segment_name(d, d.systems[at[0]].loads[i].segment); }},
    fields<&data_set::flow_fields>("flow.#", "flow field"),
    functions<&data_set::flow_fields>("flow.#.#", "flow function"),
    pairs<&data_set::flow_fields>("flow.#.#.pair.#"),
    fields<&data_set::exchange_fields>("exchange.#", "exchange field"),
    functions<&data_set::exchange_fields>("exchange.#.#", "exchange function"),
    pairs<&data_set::exchange_fields>("exchange.#.#.pair.#"),
};

// A number of a record in a list of the data set.
template <auto List, auto Member>
constexpr value_row member_of(std::string_view pattern) {
  return {.pattern = pattern,
          .read = [](const data_set& d, const positions& at) { return (d.*List)[at[0]].*Member; },
          .write = [](data_set& d, const positions& at, double value) { (d.*List).edit(at[0]).*Member = value; }};
}
template <auto Member>
constexpr value_row of_segment(std::string_view pattern) {
  return member_of<&data_set::segments, Member>(pattern);
}
template <auto Member>
constexpr value_row of_system(std::string_view pattern) {
  return member_of<&data_set::systems, Member>(pattern);
}

template <auto List>
bool field_in_use(const data_set& d, const positions& at) {
  return (d.*List)[at[0]].used;
}
template <auto List, auto Member>
constexpr value_row of_field(std::string_view pattern) {
  value_row row = member_of<List, Member>(pattern);
  row.in_use = field_in_use<List>;
  return row;
}

// A number of the data set itself.
template <double data_set::*Member>
constexpr value_row own(std::string_view pattern) {
  return {.pattern = pattern,
          .read = [](const data_set& d, const positions&) { return d.*Member; },
          .write = [](data_set& d, const positions&, double value) { d.*Member = value; }};
}

// A date and a time of the data set, together as a date-time number.
template <double data_set::*Date, double data_set::*Time>
constexpr value_row own_date(std::string_view pattern) {
  return {.pattern = pattern,
          .kind = path_kind::date,
          .read = [](const data_set& d, const positions&) { return d.*Date + d.*Time; },
          .write =
              [](data_set& d, const positions&, double value) {
                const moment_type moment = moment_type::from_date_time(value);
                d.*Date = moment_type(moment.date, 0).date_time();
                d.*Time = moment.time / seconds_per_day;
              }};
}

template <series_kind Kind>
constexpr value_row series(std::string_view pattern) {
  return {.pattern = pattern, .kind = path_kind::series, .series = [](const positions& at) {
            constexpr bool has_owner = Kind != series_kind::time_function;
            return series_ref{Kind, has_owner ? at[0] : 0, has_owner ? at[1] : at[0]};
          }};
}
template <series_kind Kind, auto List>
constexpr value_row field_series(std::string_view pattern) {
  value_row row = series<Kind>(pattern);
  row.in_use = field_in_use<List>;
  return row;
}

template <auto List, auto Member>
constexpr value_row of_pair(std::string_view pattern) {
  return {.pattern = pattern,
          .read = [](const data_set& d,
                     const positions& at) { return (d.*List)[at[0]].functions[at[1]].pairs[at[2]].*Member; },
          .write = [](data_set& d, const positions& at,
                      double value) { (d.*List).edit(at[0]).functions.edit(at[1]).pairs.edit(at[2]).*Member = value; },
          .in_use = field_in_use<List>};
}

constexpr value_row constant_row{
    .pattern = "constant.#",
    .read =
        [](const data_set& d, const positions& at) {
          const constant_data_type& constant = constant_at(d, at[0]);
          return constant.used ? constant.value : constant.default_value; // as engines take it
        },
    .write =
        [](data_set& d, const positions& at, double value) {
          const auto [group, place] = place_of_constant(d, at[0]);
          constant_data_type& constant = d.constant_groups.edit(group).constants.edit(place);
          constant.value = value;
          constant.used = true; // else an engine takes the default
        },
    .range =
        [](const data_set& d, const positions& at) {
          const constant_data_type& constant = constant_at(d, at[0]);
          return std::array{constant.minimum, constant.maximum};
        }};

constexpr value_row parameter_scale{
    .pattern = "parameter.#.scale",
    .read = [](const data_set& d, const positions& at) { return d.parameters[at[0]].scale; },
    .write = [](data_set& d, const positions& at, double value) { d.parameters.edit(at[0]).scale = value; },
    .in_use = [](const data_set& d, const positions& at) { return d.parameters[at[0]].used; }};

constexpr value_row segment_parameter{
    .pattern = "segment.#.parameter.#",
    .read = [](const data_set& d, const positions& at) { return d.segments[at[0]].parameters[at[1]].value; },
    .write =
        [](data_set& d, const positions& at, double value) {
          auto& list = d.segments.edit(at[0]).parameters;
          list.set(at[1], {list[at[1]].isc, value});
        },
    .in_use = [](const data_set& d, const positions& at) { return d.parameters[at[1]].used; },
    .range =
        [](const data_set& d, const positions& at) {
          return std::array{d.parameters[at[1]].minimum, d.parameters[at[1]].maximum};
        }};

using system_record = segment_system_data_record_type;

template <double system_record::*Member>
constexpr value_row segment_system(std::string_view pattern) {
  return {.pattern = pattern,
          .read = [](const data_set& d, const positions& at) { return d.segments[at[0]].systems[at[1]].*Member; },
          .write =
              [](data_set& d, const positions& at, double value) {
                auto& list = d.segments.edit(at[0]).systems;
                system_record record = list[at[1]];
                record.*Member = value;
                list.set(at[1], record);
              }};
}

constexpr value_row time_function_row = [] {
  value_row row = series<series_kind::time_function>("time_function.#");
  row.in_use = [](const data_set& d, const positions& at) { return d.time_functions[at[0]].used; };
  return row;
}();

constexpr value_row rows[] = {
    constant_row,
    parameter_scale,
    of_segment<&segment_data_type::volume>("segment.#.volume"),
    of_segment<&segment_data_type::vmult>("segment.#.vmult"),
    of_segment<&segment_data_type::vexp>("segment.#.vexp"),
    of_segment<&segment_data_type::dmult>("segment.#.dmult"),
    of_segment<&segment_data_type::dexp>("segment.#.dexp"),
    of_segment<&segment_data_type::length>("segment.#.length"),
    of_segment<&segment_data_type::width>("segment.#.width"),
    of_segment<&segment_data_type::slope>("segment.#.slope"),
    of_segment<&segment_data_type::bottom_roughness>("segment.#.bottom_roughness"),
    of_segment<&segment_data_type::minimum_depth>("segment.#.minimum_depth"),
    segment_parameter,
    segment_system<&system_record::initial_concentration>("segment.#.system.#.initial"),
    segment_system<&system_record::fraction_dissolved>("segment.#.system.#.dissolved"),
    of_system<&system_data_type::density>("system.#.density"),
    of_system<&system_data_type::cmax>("system.#.cmax"),
    of_system<&system_data_type::scalb>("system.#.scalb"),
    of_system<&system_data_type::convb>("system.#.convb"),
    of_system<&system_data_type::scalw>("system.#.scalw"),
    of_system<&system_data_type::convw>("system.#.convw"),
    series<series_kind::boundary>("system.#.boundary.#"),
    series<series_kind::load>("system.#.load.#"),
    time_function_row,
    of_field<&data_set::flow_fields, &flow_field_data_type::scale>("flow.#.scale"),
    of_field<&data_set::flow_fields, &flow_field_data_type::conversion>("flow.#.conversion"),
    field_series<series_kind::flow_function, &data_set::flow_fields>("flow.#.#"),
    of_pair<&data_set::flow_fields, &flow_pair_record_type::fraction>("flow.#.#.pair.#.fraction"),
    of_field<&data_set::exchange_fields, &exchange_field_data_type::scale>("exchange.#.scale"),
    of_field<&data_set::exchange_fields, &exchange_field_data_type::conversion>("exchange.#.conversion"),
    field_series<series_kind::exchange_function, &data_set::exchange_fields>("exchange.#.#"),
    of_pair<&data_set::exchange_fields, &exchange_pair_record_type::area>("exchange.#.#.pair.#.area"),
    of_pair<&data_set::exchange_fields, &exchange_pair_record_type::length>("exchange.#.#.pair.#.length"),
    {.pattern = "print_intervals",
     .kind = path_kind::series,
     .series =
         [](const positions&) {
           return series_ref{series_kind::print_intervals, 0, 0};
         }},
    {.pattern = "time_steps",
     .kind = path_kind::series,
     .series =
         [](const positions&) {
           return series_ref{series_kind::time_steps, 0, 0};
         }},
    own_date<&data_set::seed_date, &data_set::seed_time>("start"),
    own_date<&data_set::end_date, &data_set::end_time>("end"),
    own<&data_set::max_dt>("max_dt"),
    own<&data_set::min_dt>("min_dt"),
    own<&data_set::fraction_of_max_time_step>("fraction_of_max_time_step"),
    own<&data_set::volume_scale_factor>("volume_scale_factor"),
    own<&data_set::volume_conversion_factor>("volume_conversion_factor"),
};

} // namespace

std::span<const value_row> value_rows() {
  return rows;
}

const numbered_list& list_of(std::string_view pattern) {
  return *std::ranges::find(lists, pattern, &numbered_list::pattern);
}

} // namespace vesk
