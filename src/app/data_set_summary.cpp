#include "app/data_set_summary.h"

#include "app/kept_results.h"
#include "dataset/moment.h"
#include "dataset/series.h"
#include "editors/series_grid.h"
#include "platform/counted.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace vesk {

namespace {

std::string moment_text(double date_time) {
  const moment_type moment = moment_type::from_date_time(date_time);
  char time[16];
  std::snprintf(time, sizeof time, " %02d:%02d", moment.time / 3600 % 24, moment.time / 60 % 60);
  return day_text(moment) + time;
}

std::string model_row(const prevesk_dataset_data_type& data) {
  return data.model_type == 0 ? "none yet; Data > Data set chooses one" : data.model_name;
}

std::string period_row(const prevesk_dataset_data_type& data) {
  if (std::string fault = data.period_fault(); !fault.empty()) return fault;
  const double start = data.start_date_time(), end = data.end_date_time();
  const std::string both = moment_text(start) + " to " + moment_text(end);
  if (!(end > start)) return both + "; the end is not after the start";
  char days[32];
  std::snprintf(days, sizeof days, "%.10g", std::round((end - start) * 1000) / 1000);
  return both + ", " + days + (end - start == 1 ? " day" : " days");
}

std::uint64_t pairs_of(const auto& fields) {
  std::uint64_t pairs = 0;
  for (const auto& field : fields)
    for (const auto& function : field.functions) pairs += field.used ? function.pairs.size() : 0;
  return pairs;
}

std::string network_row(const prevesk_dataset_data_type& data) {
  return counted(data.segments.size(), "segment") + ", " + counted(pairs_of(data.flow_fields), "flow pair") + ", " +
         counted(pairs_of(data.exchange_fields), "exchange pair");
}

std::string systems_row(const prevesk_dataset_data_type& data) {
  std::uint64_t simulated = 0, loads = 0, boundaries = 0;
  for (const system_data_type& system : data.systems) {
    simulated += system.gsysbypass == system_simulated ? 1 : 0;
    loads += system.loads.size();
    boundaries += system.boundaries.size();
  }
  const std::string all = counted(data.systems.size(), "system");
  return all + (simulated == data.systems.size() ? "" : ", " + std::to_string(simulated) + " simulated") + ", " +
         counted(loads, "load") + ", " + counted(boundaries, "boundary", "boundaries");
}

// As in the dialog of the settings. A data set with solution type 0 runs with the first technique.
std::string solution_row(const prevesk_dataset_data_type& data) {
  std::string technique = data.solution_techniques.empty() ? "technique " + std::to_string(data.solution_type)
                                                           : data.solution_techniques[0].name;
  for (const solution_technique_type& it : data.solution_techniques)
    if (static_cast<std::uint32_t>(it.id) == data.solution_type) technique = it.name;
  constexpr const char* flows[] = {"", "net flows", "gross flows", "hydrodynamic linkage", "kinematic wave"};
  const std::string flow = data.flow_option < std::size(flows) ? flows[data.flow_option] : "";
  return technique + (flow.empty() ? "" : ", " + flow) +
         (data.negative_solution ? ", negative concentrations allowed" : "");
}

struct query_counts {
  std::uint64_t deferred = 0, stored = 0; // series with a query; `stored` are filled only on demand
};

query_counts count_queries(const prevesk_dataset_data_type& data) {
  query_counts counts;
  for_each_series(data, [&](const series_ref& ref) {
    const import_query_descriptor& query = *find_series(data, ref)->query;
    if (query.file_name.empty()) return;
    ++(query.deferred ? counts.deferred : counts.stored);
  });
  return counts;
}

std::string queries_row(const prevesk_dataset_data_type& data, const results_state* state) {
  const query_counts counts = count_queries(data);
  if (counts.deferred == 0 && counts.stored == 0) return "none";
  std::string text;
  if (counts.deferred > 0) {
    text = counted(counts.deferred, "series", "series") + " filled before each run";
    if (state) text += state->filled.empty() ? ", not yet" : ", last " + state->filled;
  }
  if (counts.stored > 0)
    text += (text.empty() ? "" : "; ") + counted(counts.stored, "series", "series") + " filled on request";
  return text;
}

std::string results_row(const results_state* state) {
  if (!state) return "being compared with the data set ...";
  if (state->from == results_state::origin::none) return "none yet; Model > Execute runs the model";
  return state->file.filename().native() + " of " + state->written + ", " + origin_in_words(*state);
}

} // namespace

std::vector<summary_row> summary_of(const prevesk_dataset_data_type& data) {
  return {{"Model", model_row(data)},
          {"Period", period_row(data)},
          {"Network", network_row(data)},
          {"Systems", systems_row(data)},
          {"Solution", solution_row(data)}};
}

std::vector<summary_row> summary_of_runs(const prevesk_dataset_data_type& data, const results_state* state) {
  return {{"Queries", queries_row(data, state)}, {"Results", results_row(state)}};
}

} // namespace vesk
