// The records that make up a data set.
//
// Plain values. Records are found by position or by their ISC number, the identifier used by catalogue and engine. A
// segment reference is a 0-based position in the data set's segments; -1 means none, or the outside of the model.
#pragma once

#include "dataset/moment.h"
#include "dataset/segment_items.h"
#include "dataset/shared_list.h"
#include "dataset/shared_value.h"
#include "dataset/short_text.h"
#include "dataset/stored_query.h"

#include <cstdint>
#include <string>

namespace vesk {

using project_component = short_text; // the name of one file of a project

inline constexpr std::int32_t no_segment = -1;

// When a query last filled a series. Never stored; all series compare equal in it.
struct fill_time {
  std::int64_t nanoseconds = 0; // since 1970; 0: not since the data file was read

  static fill_time now();
  friend bool operator==(const fill_time&, const fill_time&) { return true; }
};

// Points and the query that can fill them.
struct stored_series {
  point_list points;
  shared_value<import_query_descriptor> query; // as new when the series was typed in
  fill_time filled;

  friend bool operator==(const stored_series&, const stored_series&) = default;
};

// The position of a run's interpolation in a series. Never stored; always compares equal.
struct series_cursors {
  moment_value_pair_type cursor_next{{0, 0}, cursor_unset};     // the point at cursor_index
  moment_value_pair_type cursor_previous{{0, 0}, cursor_unset}; // the point before it
  std::uint32_t cursor_index = 0;

  friend bool operator==(const series_cursors&, const series_cursors&) { return true; }
};

enum : std::uint32_t { interpolation_linear = 0, interpolation_step = 1 };

// A series with its type of interpolation: time functions, loads, boundaries, exchange and flow functions.
struct time_series_block : stored_series, series_cursors {
  std::uint32_t interpolation_type = interpolation_linear; // 0 linear, any other value step

  friend bool operator==(const time_series_block&, const time_series_block&) = default;
};

// The print intervals, in days: always interpolated as steps.
struct print_interval_series : stored_series, series_cursors {
  friend bool operator==(const print_interval_series&, const print_interval_series&) = default;
};

// One time function of the model.
struct time_function_data_type : time_series_block {
  std::uint32_t isc = 0;
  short_text description;
  bool used = false;

  friend bool operator==(const time_function_data_type&, const time_function_data_type&) = default;
};

// A load into a segment, kg/day before scale and conversion.
struct loads_data_type : time_series_block {
  std::int32_t segment = 0;

  friend bool operator==(const loads_data_type&, const loads_data_type&) = default;
};

// The concentration outside a segment on the boundary, before scale and conversion.
struct boundary_data_type : time_series_block {
  std::int32_t segment = 0;

  friend bool operator==(const boundary_data_type&, const boundary_data_type&) = default;
};

enum : std::uint32_t { system_simulated = 0, system_constant = 1, system_bypassed = 2 };

// One simulated system, a state variable of the model.
struct system_data_type {
  std::uint32_t isc = 0; // the system's own number
  short_text description;
  std::uint32_t gsysbypass = system_simulated;
  std::uint32_t ifield = 0;  // transport field of its particulate part: 0 solids 1, 1 solids 2, 2 solids 3
  bool jmass = false;        // the mass-balance system
  bool noqsysbypass = false; // not carried by flows
  bool norsysbypass = false; // not carried by exchanges
  double density = 1.0;
  double cmax = 100.0; // largest allowed concentration
  double scalb = 1.0;  // boundary scale factor
  double convb = 1.0;  // boundary conversion factor
  double scalw = 1.0;  // loading scale factor
  double convw = 1.0;  // loading conversion factor
  shared_list<loads_data_type> loads;
  shared_list<boundary_data_type> boundaries;

  friend bool operator==(const system_data_type&, const system_data_type&) = default;
};

// One segment of the model network.
struct segment_data_type {
  segment_parameter_list parameters; // one for each of the data set's parameters
  segment_system_list systems;       // one for each of the data set's systems
  double volume = 0;                 // m3 before scale and conversion
  double vmult = 0;                  // velocity = vmult * flow ^ vexp
  double vexp = 0;
  double dmult = 0; // depth = dmult * flow ^ dexp
  double dexp = 0;
  std::uint32_t segment_type = default_segment_type;
  std::int32_t bottom_segment = no_segment; // the segment beneath
  short_text name = "Vesk Segment";
  double length = 0; // m
  double width = 0;  // m
  double slope = 0;
  double bottom_roughness = 0;
  double minimum_depth = 0; // m

  // The type of new segments: the first segment type of the model whose lists were filled last. One per thread, like
  // the seed of new moments.
  static thread_local std::uint32_t default_segment_type;

  friend bool operator==(const segment_data_type&, const segment_data_type&) = default;
};

// One parameter of the model.
struct parameter_data_type {
  std::uint32_t isc = 0;
  double minimum = 0;
  double maximum = 0;
  double default_value = 0;
  short_text description;
  bool used = false;
  double scale = 1.0;

  friend bool operator==(const parameter_data_type&, const parameter_data_type&) = default;
};

struct constant_data_type {
  std::uint32_t isc = 0;
  double minimum = 0;
  double maximum = 0;
  double default_value = 0;
  short_text description;
  std::int32_t group = -1; // position of its group in the data set, set from the catalogue; -1: none
  bool used = false;
  double value = 0;

  friend bool operator==(const constant_data_type&, const constant_data_type&) = default;
};

struct constant_group_data_type {
  std::uint32_t group_id = 0;
  short_text description;
  shared_list<constant_data_type> constants;

  friend bool operator==(const constant_group_data_type&, const constant_group_data_type&) = default;
};

struct exchange_pair_record_type {
  double area = 0;   // m2
  double length = 0; // mixing length, m
  std::int32_t segment_one = no_segment;
  std::int32_t segment_two = no_segment;

  friend bool operator==(const exchange_pair_record_type&, const exchange_pair_record_type&) = default;
};
static_assert(sizeof(exchange_pair_record_type) == 24); // as in the data file

struct flow_pair_record_type {
  double fraction = 1.0; // of the function's flow
  std::int32_t from_segment = no_segment;
  std::int32_t to_segment = no_segment;

  friend bool operator==(const flow_pair_record_type&, const flow_pair_record_type&) = default;
};
static_assert(sizeof(flow_pair_record_type) == 16); // as in the data file

// A dispersion coefficient over time, m2/s before scale and conversion, and the pairs that it applies to.
struct exchange_function_data_type : time_series_block {
  shared_array<exchange_pair_record_type> pairs;
  short_text description = "Exchange Function";

  friend bool operator==(const exchange_function_data_type&, const exchange_function_data_type&) = default;
};

// A flow over time, m3/s before scale and conversion, and the pairs that it passes through.
struct flow_function_data_type : time_series_block {
  shared_array<flow_pair_record_type> pairs;
  short_text description = "Flow Function";

  friend bool operator==(const flow_function_data_type&, const flow_function_data_type&) = default;
};

struct exchange_field_data_type {
  shared_list<exchange_function_data_type> functions;
  std::uint32_t reserved = 0; // stored, without meaning
  bool used = false;
  double scale = 1.0;
  double conversion = 1.0;
  short_text description;

  friend bool operator==(const exchange_field_data_type&, const exchange_field_data_type&) = default;
};

struct flow_field_data_type {
  shared_list<flow_function_data_type> functions;
  bool used = false;
  std::uint32_t reserved = 0; // stored, without meaning
  double scale = 1.0;
  double conversion = 1.0;
  short_text description;

  friend bool operator==(const flow_field_data_type&, const flow_field_data_type&) = default;
};

// An output variable of the model.
struct output_control_type {
  std::uint32_t isc = 0;
  short_text description;
  short_text short_description;
  short_text units;
  short_text csv_filename; // from the catalogue only, never stored
  bool enabled = true;
  bool csv_enabled = false;

  friend bool operator==(const output_control_type&, const output_control_type&) = default;
};

// A row of the catalogue's list of solution techniques.
struct solution_technique_type {
  std::int32_t id = 0;
  std::string name;

  friend bool operator==(const solution_technique_type&, const solution_technique_type&) = default;
};

enum : std::int32_t { severity_note = 1, severity_failure = 2 };

// A finding of the consistency check.
struct validation_information {
  std::string message;
  std::int32_t severity = severity_note;

  friend bool operator==(const validation_information&, const validation_information&) = default;
};

} // namespace vesk
