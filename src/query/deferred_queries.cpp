#include "query/deferred_queries.h"

#include "dataset/series.h"

#include <memory>
#include <string>
#include <utility>

namespace vesk {

namespace {

// As a user counts: from 1, and with the segment's name where it has one.
std::string segment_series_name(const prevesk_dataset_data_type& data, const char* kind, const system_data_type& system,
                                std::int32_t segment) {
  const auto at = static_cast<std::size_t>(segment);
  const bool named = segment >= 0 && at < data.segments.size() && !data.segments[at].name.empty();
  return std::string(kind) + " of " + shown_text(system.description) + " in segment " +
         std::to_string(std::int64_t{segment} + 1) +
         (named ? " (" + shown_text(data.segments[at].name) + ")" : std::string());
}

// What the report of a success calls the series; `query_label`, in the report of a failure, counts segments from 0.
std::string report_name(const prevesk_dataset_data_type& data, const series_ref& ref) {
  if (ref.kind == series_kind::load)
    return segment_series_name(data, "Load", data.systems[ref.owner], data.systems[ref.owner].loads[ref.index].segment);
  if (ref.kind == series_kind::boundary)
    return segment_series_name(data, "Boundary", data.systems[ref.owner],
                               data.systems[ref.owner].boundaries[ref.index].segment);
  return query_label(data, ref);
}

std::size_t count_all_series(const prevesk_dataset_data_type& data) {
  std::size_t count = 0;
  for_each_series(data, [&](const series_ref&) { ++count; });
  return count;
}

void execute_query(prevesk_dataset_data_type& data, const series_ref& ref, const query_executor& execute,
                   query_progress& progress, bool clear_flag) {
  const stored_series& series = *find_series(data, ref);
  try {
    point_list points = series.points;
    const query_report report = execute(*series.query, data, points);
    progress.executed(report_name(data, ref), *series.query, report);
    stored_series& target = edit_series(data, ref);
    target.points = std::move(points);
    target.filled = report.as_of;
    if (clear_flag) target.query.edit().deferred = false;
  } catch (const query_exception& error) {
    throw live_query_exception("Live query for time series \"" + query_label(data, ref) + "\" failed: " + error.what(),
                               error.fault());
  }
}

} // namespace

query_executor executor_of_a_pass(const std::filesystem::path& folder) {
  return [folder, last = std::make_shared<query_engine>()](
             const import_query_descriptor& descriptor, const prevesk_dataset_data_type& data_set, point_list& points) {
    import_query query(descriptor, folder);
    query.engine.take_connection(*last); // opened anew if the file has changed
    const query_report report = query.execute(data_set, points);
    last->take_connection(query.engine);
    return report;
  };
}

// Only series with a query to run are changed: the others, tens of thousands in a large model, go on sharing their
// points.
void execute_deferred_queries(prevesk_dataset_data_type& data_set, const query_executor& execute,
                              query_progress& progress, bool clear_flags,
                              const std::function<bool(const series_ref&)>& wanted) {
  const auto total = static_cast<double>(count_all_series(data_set));
  double done = 0;
  int last_percent = -1;
  for_each_series(data_set, [&](const series_ref& ref) {
    if (find_series(data_set, ref)->query->deferred && (!wanted || wanted(ref)))
      execute_query(data_set, ref, execute, progress, clear_flags);
    done += 1.0;
    const auto percent = static_cast<int>(done / total * 100);
    if (std::exchange(last_percent, percent) != percent) progress.percent_done(percent);
  });
}

} // namespace vesk
