#include "shell/shell_interface.h"

#include "platform/millisecond_timer.h"
#include "shell/keywords/keyword_name.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>

namespace vesk {

namespace {

// The local date and time to the millisecond, as printed at the start of a log line.
std::string time_stamp() {
  using namespace std::chrono;
  const auto now = time_point_cast<milliseconds>(system_clock::now());
  const std::time_t seconds = system_clock::to_time_t(floor<std::chrono::seconds>(now));
  const auto fraction = static_cast<int>((now.time_since_epoch() % 1s).count());
  std::tm local{};
  localtime_r(&seconds, &local);
  const moment_type moment(day_number(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday),
                           local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec);
  char text[16];
  std::snprintf(text, sizeof text, ".%03d", fraction);
  return date_time_text(moment) + text;
}

function_description describe(const keyword_row& row) {
  return {.name = pad(row.keyword),
          .handler = row.handler.call,
          .elapsed_ms = 0,
          .modes = row.modes,
          .changes_series = row.changes_series,
          .keyword = row.keyword,
          .description = row.description,
          .variables = row.variables,
          .refusal = row.refusal};
}

} // namespace

shell_interface::shell_interface() : functions(), bulk([this](std::string_view line) { log(line); }) {
  std::transform(keyword_table.begin(), keyword_table.end(), functions.begin(), describe);
}

shell_interface::shell_interface(engine_job& job) : shell_interface() {
  job_ = &job;
}

void shell_interface::attach(engine_job& job) {
  job_ = &job;
  data_set_ = &job.data_set();
  logs_ = job.has_log();
}

bool shell_interface::find_function(std::string_view keyword, std::size_t& position) const {
  const std::size_t candidate = keyword_positions.candidate(pad(keyword).folded());
  if (functions[candidate].keyword != keyword) return false;
  position = candidate;
  return true;
}

void shell_interface::log(std::string_view message) const {
  if (logs_) job_->log_line(time_stamp().append(": ").append(message));
}

void shell_interface::call(const char* name, argument_words words) {
  job_->pass_gate();
  is_get = name[0] == 'G' || name[0] == 'g';
  if (name[0] == '\0') return log_unrecognized(name);
  const char* const text = name + 1;
  const padded_keyword keyword = load_keyword(text);
  function_description& function = functions[keyword_positions.candidate(keyword.folded())];
  if (function.name != keyword) return log_unrecognized(text);
  current_ = &function;
  if (logs_)
    call_logged(function, words);
  else
    serve(function, words);
}

void shell_interface::log_unrecognized(const char* keyword) const {
  if (logs_) log(std::string("Unrecognized Name: ") + keyword);
}

void shell_interface::call_logged(function_description& function, argument_words words) {
  const bool traced = job_->logging_enabled(); // the user may switch it during a job
  if (traced) trace_head(function, words);
  {
    const millisecond_timer timer(&function.elapsed_ms);
    serve(function, words);
  }
  if (traced) trace_tail(function, words);
}

void shell_interface::serve(const function_description& function, argument_words words) {
  if (!(function.modes & (is_get ? get : put))) {
    if (!function.refusal.empty()) log(function.refusal);
    return;
  }
  if (!is_get && function.changes_series) bulk.series_changing(*data_set_);
  function.handler(*this, words);
}

void shell_interface::log_metrics() const {
  if (!logs_) return;
  bulk.log_metrics();
  for (const function_description& function : functions)
    if (function.elapsed_ms != 0)
      log(std::string(function.keyword) + " : " + std::to_string(function.elapsed_ms) + " ms");
}

void shell_interface::warn(std::string_view text) const {
  if (logs_) log(std::string("WARNING: ").append(current_->keyword).append(": ").append(text));
}

void shell_interface::warn_outside(std::int32_t number, std::int64_t first, std::int64_t last,
                                   std::size_t argument) const {
  if (!logs_) return;
  const std::string where = last < first ? "does not exist: the list is empty"
                                         : "is outside " + std::to_string(first) + " to " + std::to_string(last);
  warn(std::string(current_->variables[argument].name) + " " + std::to_string(number) + " " + where);
}

std::optional<std::size_t> shell_interface::list_size(std::int32_t count, std::size_t argument,
                                                      std::int32_t largest) const {
  if (count >= 0 && count <= largest) return static_cast<std::size_t>(count);
  warn_outside(count, 0, largest, argument);
  return {};
}

} // namespace vesk
