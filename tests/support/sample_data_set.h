// A small data set in which every stored member differs from its default, with records of every kind.
#pragma once

#include "dataset/dataset.h"

namespace vesk {

// Day number of 1 January 2000.
inline constexpr std::int32_t year_2000 = 146097;

inline import_query_descriptor sample_query(const std::string& name) {
  import_query_descriptor query;
  query.name = name;
  query.file_name = "gauges\\" + name + ".dbf";
  query.table_name = "Readings";
  query.restrict_to_run_period = query.average_duplicates = query.replace_existing = false;
  query.date_time_field = "Taken at";
  query.value_field = "mg/L";
  query.conditions = {{"Station", 0, 0, "Weir 7"}, {"Depth", 1, 4, "0.5"}};
  query.deferred = true;
  return query;
}

// Three points, the last of them before the origin of date-time numbers.
inline point_list sample_points(double value) {
  return {{{year_2000, 0}, value}, {{year_2000 + 1, 43200}, -value}, {{-5, 86399}, 1e-300}};
}

inline void fill_series(time_series_block& series, double value) {
  series.points = sample_points(value);
  series.query.edit() = sample_query("series " + std::to_string(static_cast<int>(value)));
  series.interpolation_type = interpolation_step;
}

inline time_function_data_type sample_time_function(std::uint32_t isc) {
  time_function_data_type function;
  fill_series(function, isc);
  function.isc = isc;
  function.description = "Water temperature";
  function.used = true;
  return function;
}

inline segment_data_type sample_segment(int number, std::uint32_t parameters, std::uint32_t systems) {
  segment_data_type segment;
  for (std::uint32_t i = 0; i < parameters; ++i) segment.parameters.push_back({10 + i, number + i / 8.0});
  for (std::uint32_t i = 0; i < systems; ++i) segment.systems.push_back({20 + i, number + i / 4.0, 0.25});
  segment.volume = 1000.5 * number;
  segment.vmult = 0.1;
  segment.vexp = 0.4;
  segment.dmult = 0.2;
  segment.dexp = 0.6;
  segment.segment_type = 3;
  segment.bottom_segment = number - 1;
  segment.name = "Reach " + std::to_string(number);
  segment.length = 1200;
  segment.width = 30.25;
  segment.slope = 0.001;
  segment.bottom_roughness = 0.035;
  segment.minimum_depth = 0.05;
  return segment;
}

inline system_data_type sample_system(std::uint32_t isc) {
  system_data_type system;
  system.isc = isc;
  system.description = "Dissolved oxygen";
  system.gsysbypass = system_bypassed;
  system.ifield = 2;
  system.jmass = system.noqsysbypass = system.norsysbypass = true;
  system.density = 1.5;
  system.cmax = 50;
  system.scalb = 2;
  system.convb = 3;
  system.scalw = 4;
  system.convw = 5;
  loads_data_type load;
  fill_series(load, 7);
  load.segment = 1;
  system.loads = {load};
  boundary_data_type boundary;
  fill_series(boundary, 8);
  boundary.segment = 2;
  system.boundaries = {boundary, boundary};
  return system;
}

inline constant_group_data_type sample_constant_group() {
  constant_group_data_type group;
  group.group_id = 4;
  group.description = "Reaeration";
  constant_data_type constant;
  constant.isc = 31;
  constant.minimum = -1;
  constant.maximum = 99;
  constant.default_value = 1.024;
  constant.description = "Temperature coefficient";
  constant.used = true;
  constant.value = 1.047;
  group.constants = {constant, constant};
  return group;
}

inline parameter_data_type sample_parameter(std::uint32_t isc) {
  parameter_data_type parameter;
  parameter.isc = isc;
  parameter.minimum = 0.5;
  parameter.maximum = 9.5;
  parameter.default_value = 2.5;
  parameter.description = "Sediment oxygen demand";
  parameter.used = true;
  parameter.scale = 0.75;
  return parameter;
}

inline void fill_transport_fields(prevesk_dataset_data_type& data) {
  exchange_function_data_type exchange;
  fill_series(exchange, 11);
  exchange.pairs = {{12.5, 300, 0, 1}, {4, 5, no_segment, 2}};
  exchange.description = "Tidal mixing";
  exchange_field_data_type& surface = data.exchange_fields.edit(0);
  surface.functions = {exchange};
  surface.reserved = 6;
  surface.used = true;
  surface.scale = 1.25;
  surface.conversion = 2.25;
  surface.description = "Estuary";

  flow_function_data_type flow;
  fill_series(flow, 12);
  flow.pairs = {{0.5, no_segment, 0}, {1, 0, 1}, {1, 1, no_segment}};
  flow.description = "Main stem";
  flow_field_data_type& water = data.flow_fields.edit(5);
  water.functions = {flow, flow};
  water.used = true;
  water.reserved = 7;
  water.scale = 3.25;
  water.conversion = 4.25;
  water.description = "Rain";
}

inline output_control_type sample_output_control() {
  output_control_type output;
  output.isc = 41;
  output.description = "Dissolved oxygen";
  output.short_description = "DO";
  output.units = "mg/L";
  output.enabled = false;
  output.csv_enabled = true;
  return output;
}

inline prevesk_dataset_data_type sample_data_set() {
  prevesk_dataset_data_type data;
  data.print_intervals.points = sample_points(1);
  data.print_intervals.query.edit() = sample_query("print");
  data.time_steps.points = sample_points(2);
  data.time_steps.query.edit() = sample_query("step");
  data.segments = {sample_segment(1, 3, 2), sample_segment(2, 3, 2), sample_segment(3, 2, 1)};
  data.time_functions = {sample_time_function(1), sample_time_function(2)};
  data.constant_groups = {sample_constant_group()};
  data.systems = {sample_system(20), sample_system(21)};
  data.parameters = {sample_parameter(10), sample_parameter(11), sample_parameter(12)};
  fill_transport_fields(data);
  data.output_controls = {sample_output_control()};
  data.comments = "First line\r\nSecond \"line\"";
  data.description = "Lower river, \xc3\xa4nderung 3"; // UTF-8
  data.hydrodynamic_file = "flows\\Stra\xdf"
                           "e.hyd"; // Windows-1252
  data.nps_file = "runoff.nps";
  data.seed_date = 36526; // 1 January 2000
  data.end_date = 36556;
  data.seed_time = 0.25;
  data.end_time = 0.75;
  data.skip_date = 36530;
  data.skip_time = 0.125;
  data.time_step_option = false;
  data.negative_solution = data.use_nps_file = data.bed_compaction_option = true;
  data.reserved_option = 8;
  data.model_type = 9;
  data.restart_option = 1;
  data.vesk_to_vesk_linkage_option = 1;
  data.flow_option = 3;
  data.volume_scale_factor = 1.1;
  data.volume_conversion_factor = 1.2;
  data.bed_compaction_time_step = 1.3;
  data.fraction_of_max_time_step = 0.8;
  data.hydrodynamic_file_type = 2;
  data.solution_type = 5;
  data.max_dt = 0.5;
  data.min_dt = 0.001;
  data.project_files = {"lower.vki", "upper reach.vki"};
  return data;
}

} // namespace vesk
