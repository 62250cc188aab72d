// The check of a data set against the engine's limits and against the files that it names.
#include "dataset/dataset.h"

#include "dataset/series.h"
#include "platform/file_lookup.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <utility>

namespace vesk {

namespace {

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int size = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(static_cast<std::size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

// Collects the findings of one check.
class limit_check {
public:
  limit_check(prevesk_dataset_data_type& data, std::filesystem::path folder)
      : data_(data), folder_(std::move(folder)) {}

  void run() {
    data_.validation_results.clear();
    if (data_.segments.size() > data_.max_num_segments)
      add(severity_failure, formatted("Maximum of %u segments exceeded", data_.max_num_segments));
    for (const series_kind kind : order)
      for (std::size_t owner = 0; owner < owner_count(data_, kind); ++owner) {
        check_owner(kind, owner);
        for_each_series(data_, kind, owner, [&](const series_ref& ref) { check_series(ref); });
      }
    check_files();
    if (const std::string fault = data_.period_fault(); !fault.empty()) add(severity_failure, fault);
  }

private:
  static constexpr series_kind order[] = {
      series_kind::exchange_function, series_kind::flow_function, series_kind::load,         series_kind::boundary,
      series_kind::print_intervals,   series_kind::time_steps,    series_kind::time_function};

  void add(std::int32_t severity, std::string message) {
    data_.validation_results.push_back({std::move(message), severity});
  }
  static std::string marked(const short_text& name, const char* mark) { return mark + name.str(); }

  void check_owner(series_kind kind, std::size_t owner) {
    switch (kind) {
    case series_kind::exchange_function: return check_field(data_.exchange_fields[owner], "exchange");
    case series_kind::flow_function: return check_field(data_.flow_fields[owner], "flow");
    case series_kind::load: return check_loads(data_.systems[owner]);
    case series_kind::boundary: return check_boundaries(data_.systems[owner]);
    default: return;
    }
  }

  template <class Field>
  void check_field(const Field& field, const char* kind) {
    if (field.functions.size() > data_.max_num_ef_functions)
      add(severity_of(field), formatted("Maximum of %u %s functions for %s %s field exceeded",
                                        data_.max_num_ef_functions, kind, display_name(field).c_str(), kind));
  }

  void check_loads(const system_data_type& system) {
    if (system.loads.size() > data_.max_num_loads)
      add(severity_of(system),
          formatted("Maximum of %u loads for %s system exceeded", data_.max_num_loads, display_name(system).c_str()));
  }

  void check_boundaries(const system_data_type& system) {
    const std::string name = display_name(system);
    if (system.boundaries.size() > data_.max_num_boundaries)
      add(severity_of(system),
          formatted("Maximum of %u boundaries for %s system exceeded", data_.max_num_boundaries, name.c_str()));
    if (system.boundaries.empty()) add(severity_of(system), formatted("%s system has no boundaries.", name.c_str()));
  }

  void check_series(const series_ref& ref) {
    if (find_series(data_, ref)->points.size() <= data_.max_num_time_breaks) return;
    const std::size_t i = ref.index;
    switch (ref.kind) {
    case series_kind::print_intervals: return too_many_pairs(severity_failure, "print intervals");
    case series_kind::time_steps: return too_many_pairs(severity_failure, "time steps");
    case series_kind::time_function: {
      const time_function_data_type& function = data_.time_functions[i];
      return too_many_pairs(severity_of(function), display_name(function) + " time function");
    }
    case series_kind::load: return too_many_pairs(ref, data_.systems[ref.owner].loads[i].segment, "load");
    case series_kind::boundary: return too_many_pairs(ref, data_.systems[ref.owner].boundaries[i].segment, "boundary");
    case series_kind::exchange_function: return too_many_pairs(data_.exchange_fields[ref.owner], i, "exchange");
    case series_kind::flow_function: return too_many_pairs(data_.flow_fields[ref.owner], i, "flow");
    }
  }

  void too_many_pairs(std::int32_t severity, const std::string& series) {
    add(severity,
        formatted("Maximum of %u time/value pairs for %s exceeded", data_.max_num_time_breaks, series.c_str()));
  }

  void too_many_pairs(const series_ref& ref, std::int32_t segment, const char* kind) {
    const system_data_type& system = data_.systems[ref.owner];
    const bool inside = segment >= 0 && static_cast<std::size_t>(segment) < data_.segments.size();
    const char* name = inside ? data_.segments[static_cast<std::size_t>(segment)].name.c_str() : "";
    too_many_pairs(severity_of(system),
                   formatted("segment %lld (%s) %s on %s system", static_cast<long long>(segment) + 1, name, kind,
                             display_name(system).c_str()));
  }

  template <class Field>
  void too_many_pairs(const Field& field, std::size_t index, const char* kind) {
    add(severity_of(field), formatted("Maximum of %u time value pairs for %s function %zu of %s %s field exceeded",
                                      data_.max_num_time_breaks, kind, index + 1, display_name(field).c_str(), kind));
  }

  static std::string display_name(const system_data_type& system) {
    return marked(system.description, system.gsysbypass == system_bypassed ? "BYPASSED " : "");
  }
  template <class Record>
  static std::string display_name(const Record& record) {
    return marked(record.description, record.used ? "" : "UNUSED ");
  }

  static std::int32_t severity_of(const system_data_type& system) {
    return system.gsysbypass == system_bypassed ? severity_note : severity_failure;
  }
  template <class Record>
  static std::int32_t severity_of(const Record& record) {
    return record.used ? severity_failure : severity_note;
  }

  void check_files() {
    if (data_.flow_option == 3 && find_file(data_.hydrodynamic_file, folder_).empty())
      add(severity_failure, "Hydrodynamic linkage file " + data_.hydrodynamic_file + " does not exist");
    if (data_.use_nps_file && find_file(data_.nps_file, folder_).empty())
      add(severity_failure, "NPS file " + data_.nps_file + " does not exist");
  }

  prevesk_dataset_data_type& data_;
  const std::filesystem::path folder_;
};

} // namespace

std::string prevesk_dataset_data_type::period_fault() const {
  for (const auto& [name, date_time] : {std::pair("start", start_date_time()), std::pair("end", end_date_time())}) {
    if (in_calendar(date_time)) continue;
    constexpr double longest = 1e8; // days that can be shown as a date
    const std::string shown = std::abs(date_time) < longest ? date_time_text(moment_type::from_date_time(date_time))
                                                            : formatted("%g", date_time);
    return std::string("The ") + name + " of the simulation, " + shown +
           ", is not a date from 1/1/1600 to 12/31/3999; set it in the data set's settings";
  }
  return {};
}

bool prevesk_dataset_data_type::check_limits(const std::filesystem::path& data_folder) {
  limit_check(*this, data_folder).run();
  for (const validation_information& finding : validation_results)
    if (finding.severity == severity_failure) return false;
  return true;
}

} // namespace vesk
