#include "app/results_state.h"

#include "app/file_names.h"
#include "app/kept_results.h"
#include "app/run_recorder.h"
#include "platform/counted.h"
#include "platform/file_identity.h"

#include <algorithm>
#include <ctime>
#include <set>
#include <vector>

namespace vesk {

namespace {

namespace fs = std::filesystem;

std::string local_time(std::time_t seconds) {
  std::tm parts{};
  localtime_r(&seconds, &parts);
  char day[32] = "", time[32] = "";
  std::strftime(day, sizeof day, "%e %b %Y", &parts);
  std::strftime(time, sizeof time, " %H:%M", &parts);
  return std::string(day + (day[0] == ' ' ? 1 : 0)) + time;
}

// Of "2026-11-22T04:30:12.345Z"; empty: not such a text.
std::string local_time_of(const std::string& utc) {
  std::tm parts{};
  return strptime(utc.c_str(), "%Y-%m-%dT%H:%M:%S", &parts) ? local_time(timegm(&parts)) : std::string();
}

bool is_as_recorded(const recorded_file& then) {
  const recorded_file now = describe_file(then.file, false);
  return now.bytes == then.bytes && now.modified == then.modified;
}

// The results may have been moved or renamed together with their record, so only size and time are compared.
bool is_record_of(const past_run& run, const fs::path& results) {
  const recorded_file now = describe_file(results, false);
  return std::ranges::any_of(run.outputs, [&](const recorded_file& it) {
    return upper_extension(it.file) == ".NC" && it.bytes == now.bytes && it.modified == now.modified;
  });
}

// The tables of its queries that have been written or deleted since, as "the table gauges.csv".
std::string changed_tables(const past_run& run) {
  std::set<std::string> names;
  for (const recorded_query& query : run.queries)
    if (!is_as_recorded(query.source)) names.insert(leaf_of(query.source.file));
  if (names.empty()) return {};
  return names.size() == 1 ? "the table " + *names.begin() : counted(names.size(), "table");
}

void compare(const prevesk_dataset_data_type& data, const past_run& run, results_state& state) {
  if (!run.queries.empty()) state.filled = local_time_of(run.started);
  state.changes = changes_in_words(run.data_set, hashes_of(data));
  if (const std::string tables = changed_tables(run); !tables.empty())
    state.changes += (state.changes.empty() ? "" : "; ") + tables;
  state.from = state.changes.empty() ? results_state::origin::this_data_set : results_state::origin::changed;
}

} // namespace

results_state state_of_results(const prevesk_dataset_data_type& data, const fs::path& base) {
  results_state state;
  if (base.empty()) return state;
  state.file = results_file_of(base);
  const auto identity = identity_of(state.file);
  if (!identity) return state;
  state.from = results_state::origin::unknown;
  state.written = local_time(identity->changed_seconds);
  try {
    if (const past_run run = read_run_record(record_file_of(base)); is_record_of(run, state.file))
      compare(data, run, state);
  } catch (const std::exception&) { // no record that can be read
  }
  return state;
}

std::string origin_in_words(const results_state& state) {
  switch (state.from) {
  case results_state::origin::none: break;
  case results_state::origin::unknown: return "from which data set is not recorded";
  case results_state::origin::this_data_set: return "from this data set";
  case results_state::origin::changed: return "changed since: " + state.changes;
  }
  return {};
}

} // namespace vesk
