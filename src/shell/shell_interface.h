// The keyword interface of one job: dispatch, trace, lookups, and functions shared by the handlers.
#pragma once

#include "shell/bulk/bulk_service.h"
#include "shell/job.h"
#include "shell/keywords/function_description.h"
#include "shell/keywords/keyword_table.h"

#include <array>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string_view>

namespace vesk {

// The position of a constant: both indices are 0-based.
struct constant_position {
  std::size_t group;
  std::size_t constant; // in its group

  friend bool operator==(const constant_position&, const constant_position&) = default;
};

// The position of a per-segment value: both indices are 0-based.
struct segment_item_position {
  std::size_t segment;
  std::size_t item; // in the segment's own list

  friend bool operator==(const segment_item_position&, const segment_item_position&) = default;
};

// Owned by a job. All members are called on the thread that calls the callback, one call at a time. A
// default-constructed object serves no job: only its table may be used.
class shell_interface {
public:
  shell_interface();
  explicit shell_interface(engine_job& job);
  shell_interface(const shell_interface&) = delete;
  shell_interface& operator=(const shell_interface&) = delete;

  // The number of the first item as counted by the engine: subtracted from each index received, added to each segment
  // number returned.
  std::int32_t index_base = 1;
  // The mode of the current call.
  bool is_get = false;
  // The table, ordered by the bytes of the keywords.
  std::array<function_description, keyword_count> functions;
  // The service for `DAYS`, with the time counters of its stages.
  bulk_service bulk;

  // Prepares for calls of `job`, the owner of this object. Called by engine_job_scope.
  void attach(engine_job& job);

  engine_job& job() const { return *job_; }
  prevesk_dataset_data_type& data_set() const { return *data_set_; }

  // True if exactly `keyword` is in the table; `position` is then its position in `functions`.
  bool find_function(std::string_view keyword, std::size_t& position) const;

  // Performs one call of the engine: `name` is mode letter and keyword. Throws what a handler throws.
  void call(const char* name, argument_words words);

  // Logs the time spent in the job's keywords and in the stages of `DAYS`. Call it at the end of the job.
  void log_metrics() const;

  // The keyword of the current call, for reporting a failure; empty before the first call.
  std::string_view current_keyword() const { return current_ ? current_->keyword : std::string_view(); }

  // True if there is a log file; skip building log-only text otherwise.
  bool logs() const { return logs_; }
  // Appends a line with date, time and `message`; does nothing without a log file.
  void log(std::string_view message) const;

  // Prints all keywords, ordered by their bytes, for engine authors.
  void write_dictionary(std::ostream& stream) const;

  // Lookups. They take the engine's numbers, return 0-based positions in the data set's lists, and log the search and a
  // failure.

  // Item number `n` among those switched on; constants are counted across all groups.
  std::optional<constant_position> get_nth_constant(std::int32_t n) const;
  std::optional<std::size_t> get_nth_time_function(std::int32_t n) const;
  std::optional<std::size_t> get_nth_parameter(std::int32_t n) const;
  std::optional<std::size_t> get_nth_output_parameter(std::int32_t n) const;
  std::optional<std::size_t> get_nth_csv_output_parameter(std::int32_t n) const;

  // Field number `n`, switched on or not.
  std::optional<std::size_t> get_nth_exchange_field(std::int32_t n) const;
  std::optional<std::size_t> get_nth_flow_field(std::int32_t n) const;

  // The first item with the ISC number, switched on or not.
  std::optional<constant_position> get_constant_by_isc(std::int32_t isc) const;
  std::optional<std::size_t> get_parameter_by_isc(std::int32_t isc) const;
  std::optional<std::size_t> get_time_function_by_isc(std::int32_t isc) const;
  std::optional<std::size_t> get_output_parameter_by_isc(std::int32_t isc) const;

  // The position of the first system whose own number is `system`; 0 if there is none, so a wrong number gives the
  // first system.
  std::size_t get_actual_system_index(std::int32_t system) const;
  // The same position; nothing only if the data set has no systems.
  std::optional<std::size_t> get_nth_system(std::int32_t n) const;

  // The value of a parameter or system in one segment. A segment outside the model gives a warning.
  std::optional<segment_item_position> get_nth_segment_parameter(std::int32_t segment_index,
                                                                 std::int32_t param_index) const;
  std::optional<segment_item_position> get_segment_parameter_by_isc(std::int32_t segment_index, std::int32_t isc) const;
  std::optional<segment_item_position> get_nth_segment_system(std::int32_t segment_index,
                                                              std::int32_t system_index) const;

  // For handlers.

  // The 0-based position of item `number` in a list of `size`. For an index out of range logs a warning that names the
  // current keyword and its argument number `argument`, 0-based.
  std::optional<std::size_t> position(std::int32_t number, std::size_t size, std::size_t argument) const {
    const auto result = static_cast<std::uint32_t>(number) - static_cast<std::uint32_t>(index_base);
    if (result < size) [[likely]]
      return result;
    warn_outside(number, index_base, static_cast<std::int64_t>(size) + index_base - 1, argument);
    return {};
  }

  // The new size of a list; nothing, with a warning as above, if it is not a possible size.
  std::optional<std::size_t> list_size(std::int32_t count, std::size_t argument,
                                       std::int32_t largest = largest_list) const;
  // Far beyond any model; limits the memory that a garbage number can take.
  static constexpr std::int32_t largest_list = 10'000'000;

  // Logs "WARNING: ", the current keyword, ": " and `text`.
  void warn(std::string_view text) const;

private:
  [[gnu::noinline]] void log_unrecognized(const char* keyword) const;
  void call_logged(function_description& function, argument_words words);
  void serve(const function_description& function, argument_words words);
  void trace_head(const function_description& function, argument_words words) const;
  void trace_tail(const function_description& function, argument_words words) const;
  void trace_variables(const function_description& function, argument_words words, std::size_t longest_text) const;
  void warn_outside(std::int32_t number, std::int64_t first, std::int64_t last, std::size_t argument) const;

  engine_job* job_ = nullptr;
  prevesk_dataset_data_type* data_set_ = nullptr;
  const function_description* current_ = nullptr; // of the current call
  bool logs_ = false;
};

} // namespace vesk
