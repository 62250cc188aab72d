// The layout of the .VKI data file: the fields of each record, in file order.
//
// Each record, and the data set itself, is described once, as `layout<Record>::fields(visitor, record)`. Reader, writer
// and everything else that walks a data set in file order are visitors of this one description, so that they cannot
// disagree. A visitor has
//
//   field(name, member)            a field; its C++ type determines its form
//   section(number, name, member)  a section of the file, with the data set member of that name
//   points_section(number, name, series), query_section(number, name, series)
//                                  the two sections of a series that belongs to the data set itself
//   header(version)                the part before the sections
//   from(version)                  whether the file's version has the next fields; `version` is the first with them
//   only(first, last)              the same for fields that only the versions from `first` to `last` have
//   retired_text(name), retired_queries(name)
//                                  data of older versions, skipped; the names stay reserved
//
// Stored forms, all little-endian and unaligned: bool 1 byte; 32-bit integers and doubles as they are; a text its u32
// length and its bytes; a list its u32 count and its elements; a shared_value its value.
//
// Version and section numbers never change. docs/file-format.md has the same description for readers.
#pragma once

#include "dataset/dataset.h"

namespace vesk {

template <class Record>
struct layout;

// Base class for visitors: answers `from` and `only` for one version.
class versioned {
public:
  explicit versioned(std::uint32_t version) : version_(version) {}
  std::uint32_t version() const { return version_; }
  bool from(std::uint32_t first) const { return version_ >= first; }
  bool only(std::uint32_t first, std::uint32_t last) const { return version_ >= first && version_ <= last; }

private:
  std::uint32_t version_;
};

template <>
struct layout<query_condition> {
  static void fields(auto& v, auto& r) {
    v.field("field_name", r.field_name);
    v.field("conjunction", r.conjunction);
    v.field("comparison", r.comparison);
    v.field("value_text", r.value_text);
  }
};

template <>
struct layout<import_query_descriptor> {
  static void fields(auto& v, auto& r) {
    v.field("name", r.name);
    v.field("file_name", r.file_name);
    v.field("table_name", r.table_name);
    v.field("restrict_to_run_period", r.restrict_to_run_period);
    v.field("average_duplicates", r.average_duplicates);
    v.field("date_time_field", r.date_time_field);
    v.field("value_field", r.value_field);
    v.field("replace_existing", r.replace_existing);
    v.field("conditions", r.conditions);
    if (v.from(0x00070001)) v.field("deferred", r.deferred);
  }
};

// The last fields of most series records.
void interpolation_and_query(auto& v, auto& r) {
  if (v.from(0x00070006)) v.field("interpolation_type", r.interpolation_type);
  if (v.from(0x00070002)) v.field("query", r.query);
  if (v.only(0x00010007, 0x00070001)) v.retired_text("query expression");
}

template <>
struct layout<time_function_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("used", r.used);
    v.field("isc", r.isc);
    v.field("description", r.description);
    v.field("points", r.points);
    interpolation_and_query(v, r);
  }
};

// A load or a boundary.
struct segment_series_layout {
  static void fields(auto& v, auto& r) {
    v.field("points", r.points);
    v.field("segment", r.segment);
    interpolation_and_query(v, r);
  }
};
template <>
struct layout<loads_data_type> : segment_series_layout {};
template <>
struct layout<boundary_data_type> : segment_series_layout {};

template <>
struct layout<system_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("isc", r.isc);
    v.field("gsysbypass", r.gsysbypass);
    v.field("ifield", r.ifield);
    v.field("jmass", r.jmass);
    v.field("noqsysbypass", r.noqsysbypass);
    v.field("norsysbypass", r.norsysbypass);
    v.field("density", r.density);
    v.field("cmax", r.cmax);
    v.field("scalb", r.scalb);
    v.field("convb", r.convb);
    v.field("scalw", r.scalw);
    v.field("convw", r.convw);
    v.field("description", r.description); // position differs from memory
    v.field("loads", r.loads);
    v.field("boundaries", r.boundaries);
  }
};

template <>
struct layout<segment_parameter_data_record_type> { // 12 bytes
  static void fields(auto& v, auto& r) {
    v.field("isc", r.isc);
    v.field("value", r.value);
  }
};

template <>
struct layout<segment_system_data_record_type> { // 20 bytes
  static void fields(auto& v, auto& r) {
    v.field("isc", r.isc);
    v.field("initial_concentration", r.initial_concentration);
    v.field("fraction_dissolved", r.fraction_dissolved);
  }
};

template <>
struct layout<segment_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("parameters", r.parameters);
    v.field("systems", r.systems);
    v.field("volume", r.volume);
    v.field("vmult", r.vmult);
    v.field("vexp", r.vexp);
    v.field("dmult", r.dmult);
    v.field("dexp", r.dexp);
    v.field("segment_type", r.segment_type);
    v.field("bottom_segment", r.bottom_segment);
    v.field("name", r.name);
    if (v.from(0x00010008)) {
      v.field("length", r.length);
      v.field("width", r.width);
      v.field("slope", r.slope);
      v.field("bottom_roughness", r.bottom_roughness);
    }
    if (v.from(0x00070004)) v.field("minimum_depth", r.minimum_depth);
  }
};

template <>
struct layout<constant_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("isc", r.isc);
    v.field("minimum", r.minimum);
    v.field("maximum", r.maximum);
    v.field("default_value", r.default_value);
    v.field("description", r.description);
    v.field("used", r.used);
    v.field("value", r.value);
  }
};

template <>
struct layout<constant_group_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("group_id", r.group_id);
    v.field("description", r.description);
    v.field("constants", r.constants);
  }
};

template <>
struct layout<parameter_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("isc", r.isc);
    v.field("minimum", r.minimum);
    v.field("maximum", r.maximum);
    v.field("default_value", r.default_value);
    v.field("description", r.description);
    v.field("used", r.used);
    v.field("scale", r.scale);
  }
};

template <>
struct layout<exchange_pair_record_type> { // 24 bytes
  static void fields(auto& v, auto& r) {
    v.field("area", r.area);
    v.field("length", r.length);
    v.field("segment_one", r.segment_one);
    v.field("segment_two", r.segment_two);
  }
};

template <>
struct layout<flow_pair_record_type> { // 16 bytes
  static void fields(auto& v, auto& r) {
    v.field("fraction", r.fraction);
    v.field("from_segment", r.from_segment);
    v.field("to_segment", r.to_segment);
  }
};

// An exchange function or a flow function.
struct transport_function_layout {
  static void fields(auto& v, auto& r) {
    v.field("points", r.points);
    v.field("pairs", r.pairs);
    v.field("description", r.description);
    interpolation_and_query(v, r);
  }
};
template <>
struct layout<exchange_function_data_type> : transport_function_layout {};
template <>
struct layout<flow_function_data_type> : transport_function_layout {};

template <>
struct layout<exchange_field_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("functions", r.functions);
    v.field("reserved", r.reserved); // order differs from the flow field
    v.field("used", r.used);
    v.field("scale", r.scale);
    v.field("conversion", r.conversion);
    v.field("description", r.description);
  }
};

template <>
struct layout<flow_field_data_type> {
  static void fields(auto& v, auto& r) {
    v.field("functions", r.functions);
    v.field("used", r.used);
    v.field("reserved", r.reserved);
    v.field("scale", r.scale);
    v.field("conversion", r.conversion);
    v.field("description", r.description);
  }
};

template <>
struct layout<output_control_type> {
  static void fields(auto& v, auto& r) {
    v.field("isc", r.isc);
    v.field("description", r.description);
    v.field("short_description", r.short_description);
    v.field("units", r.units);
    v.field("enabled", r.enabled);
    v.field("csv_enabled", r.csv_enabled);
  }
};

template <>
struct layout<prevesk_dataset_data_type> {
  static constexpr int last_section = 41;

  static void fields(auto& v, auto& d) {
    v.header(d.file_version);
    v.points_section(1, "print_intervals.points", d.print_intervals);
    v.points_section(2, "time_steps.points", d.time_steps);
    v.section(3, "segments", d.segments);
    v.section(4, "time_functions", d.time_functions);
    v.section(5, "constant_groups", d.constant_groups);
    v.section(6, "systems", d.systems);
    v.section(7, "parameters", d.parameters);
    v.section(8, "exchange_fields", d.exchange_fields);
    v.section(9, "flow_fields", d.flow_fields);
    v.section(10, "comments", d.comments);
    v.section(11, "description", d.description);
    v.section(12, "hydrodynamic_file", d.hydrodynamic_file);
    v.section(13, "nps_file", d.nps_file);
    v.section(14, "seed_date", d.seed_date);
    v.section(15, "end_date", d.end_date);
    v.section(16, "seed_time", d.seed_time);
    v.section(17, "end_time", d.end_time);
    v.section(18, "time_step_option", d.time_step_option);
    v.section(19, "negative_solution", d.negative_solution);
    v.section(20, "use_nps_file", d.use_nps_file);
    v.section(21, "bed_compaction_option", d.bed_compaction_option);
    v.section(22, "reserved_option", d.reserved_option);
    v.section(23, "model_type", d.model_type);
    v.section(24, "restart_option", d.restart_option);
    v.section(25, "flow_option", d.flow_option);
    v.section(26, "volume_scale_factor", d.volume_scale_factor);
    v.section(27, "volume_conversion_factor", d.volume_conversion_factor);
    v.section(28, "bed_compaction_time_step", d.bed_compaction_time_step);
    if (v.from(0x00010002)) v.section(29, "hydrodynamic_file_type", d.hydrodynamic_file_type);
    if (v.from(0x00010002)) v.section(30, "solution_type", d.solution_type);
    if (v.only(0x00010007, 0x00070001)) v.retired_queries(31, "legacy query list");
    if (v.from(0x00010009)) v.section(32, "output_controls", d.output_controls);
    if (v.from(0x00070002)) v.query_section(33, "print_intervals.query", d.print_intervals);
    if (v.from(0x00070002)) v.query_section(34, "time_steps.query", d.time_steps);
    if (v.from(0x00070003)) v.section(35, "skip_date", d.skip_date);
    if (v.from(0x00070003)) v.section(36, "skip_time", d.skip_time);
    if (v.from(0x00070004)) v.section(37, "fraction_of_max_time_step", d.fraction_of_max_time_step);
    if (v.from(0x00070006)) v.section(38, "max_dt", d.max_dt);
    if (v.from(0x00070006)) v.section(39, "min_dt", d.min_dt);
    if (v.from(0x00070007)) v.section(40, "vesk_to_vesk_linkage_option", d.vesk_to_vesk_linkage_option);
    // Newer sections are written before it: the header's offset points to the last one.
    if (v.from(0x00070005)) v.section(last_section, "project_files", d.project_files);
  }
};

} // namespace vesk
