// The check of a data set against the engine's limits and against the files that it names.
#include "dataset/dataset.h"

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
    for (const auto& field : data_.exchange_fields) check_field(field, "exchange");
    for (const auto& field : data_.flow_fields) check_field(field, "flow");
    for (const auto& system : data_.systems) check_loads(system);
    for (const auto& system : data_.systems) check_boundaries(system);
    if (too_long(data_.print_intervals))
      add(severity_failure, formatted("Maximum of %u time/value pairs for print intervals exceeded", breaks()));
    if (too_long(data_.time_steps))
      add(severity_failure, formatted("Maximum of %u time/value pairs for time steps exceeded", breaks()));
    for (const auto& function : data_.time_functions)
      if (too_long(function))
        add(function.used ? severity_failure : severity_note,
            formatted("Maximum of %u time/value pairs for %s time function exceeded", breaks(),
                      marked(function.description, function.used ? "" : "UNUSED ").c_str()));
    check_files();
    if (const std::string fault = data_.period_fault(); !fault.empty()) add(severity_failure, fault);
  }

private:
  void add(std::int32_t severity, std::string message) {
    data_.validation_results.push_back({std::move(message), severity});
  }
  std::uint32_t breaks() const { return data_.max_num_time_breaks; }
  bool too_long(const stored_series& series) const { return series.points.size() > breaks(); }
  static std::string marked(const short_text& name, const char* mark) { return mark + name.str(); }

  template <class Field>
  void check_field(const Field& field, const char* kind) {
    const std::string name = marked(field.description, field.used ? "" : "UNUSED ");
    const std::int32_t severity = field.used ? severity_failure : severity_note;
    if (field.functions.size() > data_.max_num_ef_functions)
      add(severity, formatted("Maximum of %u %s functions for %s %s field exceeded", data_.max_num_ef_functions, kind,
                              name.c_str(), kind));
    for (std::size_t i = 0; i < field.functions.size(); ++i)
      if (too_long(field.functions[i]))
        add(severity, formatted("Maximum of %u time value pairs for %s function %zu of %s %s field exceeded", breaks(),
                                kind, i + 1, name.c_str(), kind));
  }

  void check_loads(const system_data_type& system) {
    const std::string name = display_name(system);
    if (system.loads.size() > data_.max_num_loads)
      add(severity_of(system),
          formatted("Maximum of %u loads for %s system exceeded", data_.max_num_loads, name.c_str()));
    for (const auto& load : system.loads) check_segment_series(system, load, "load");
  }

  void check_boundaries(const system_data_type& system) {
    const std::string name = display_name(system);
    if (system.boundaries.size() > data_.max_num_boundaries)
      add(severity_of(system),
          formatted("Maximum of %u boundaries for %s system exceeded", data_.max_num_boundaries, name.c_str()));
    if (system.boundaries.empty()) add(severity_of(system), formatted("%s system has no boundaries.", name.c_str()));
    for (const auto& boundary : system.boundaries) check_segment_series(system, boundary, "boundary");
  }

  template <class Series>
  void check_segment_series(const system_data_type& system, const Series& series, const char* kind) {
    if (!too_long(series)) return;
    const bool inside = series.segment >= 0 && static_cast<std::size_t>(series.segment) < data_.segments.size();
    const char* segment = inside ? data_.segments[static_cast<std::size_t>(series.segment)].name.c_str() : "";
    add(severity_of(system),
        formatted("Maximum of %u time/value pairs for segment %lld (%s) %s on %s system exceeded", breaks(),
                  static_cast<long long>(series.segment) + 1, segment, kind, display_name(system).c_str()));
  }

  static std::string display_name(const system_data_type& system) {
    return marked(system.description, system.gsysbypass == system_bypassed ? "BYPASSED " : "");
  }
  static std::int32_t severity_of(const system_data_type& system) {
    return system.gsysbypass == system_bypassed ? severity_note : severity_failure;
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
