// Deferred queries, executed before a run or by the user's command.
#include "app/busy_cursor.h"
#include "app/failure_kinds.h"
#include "app/file_names.h"
#include "app/run_control.h"
#include "platform/file_lookup.h"

#include <algorithm>

namespace vesk {

namespace {

// Shows progress and reports, and counts series without points.
struct shown_progress final : query_progress {
  shown_progress(user_interface& shown_on, std::filesystem::path its_folder, std::vector<recorded_query>& its_executed)
      : ui(shown_on), folder(std::move(its_folder)), executed_queries(its_executed) {}

  void percent_done(int percent) override { ui.set_progress(percent); }
  void executed(const std::string& series, const import_query_descriptor& query, const query_report& report) override {
    if (report.points == 0) ++without_points;
    const std::filesystem::path found = find_file(query.file_name, folder);
    executed_queries.push_back(
        {.series = series,
         .source = {.file = found.empty() ? query.file_name : std::filesystem::absolute(found).native()},
         .rows = report.rows,
         .points = report.points});
    ui.query_executed(series, query, report);
  }

  user_interface& ui;
  std::filesystem::path folder; // of the data file
  std::vector<recorded_query>& executed_queries;
  int without_points = 0;
};

} // namespace

bool run_control::run_queries(prevesk_dataset_data_type& data_set, bool clear_flags,
                              const std::function<bool(const series_ref&)>& wanted) {
  shown_progress progress(ui_, split_file_name(documents_.file_name).folder, executed_);
  std::string title = "Error", failure;
  failure_kind kind = failure_kind::data;
  try {
    const busy_cursor busy(ui_);
    execute_deferred_queries(data_set, execute_query, progress, clear_flags, wanted);
  } catch (const live_query_exception& error) {
    title = "Live query error";
    failure = error.what();
    kind = kind_of_failure(error);
  } catch (const std::exception& error) {
    failure = error.what();
    kind = failure_kind::software;
  }
  if (failure.empty() && (progress.without_points == 0 || ui_.may_go_on_without_rows(progress.without_points)))
    return true;
  executed_.clear();
  form_.note_failure(failure.empty() ? "A query found no values." : failure, kind);
  clear_progress();
  if (failure.empty()) return false; // the user interface has given the reason
  if (!ui_.boxes_stay_in_sight()) ui_.add_info_line(failure, icon_failure);
  ui_.message_box(title, failure, box_buttons::ok);
  return false;
}

bool run_control::execute_all_deferred_queries() {
  prevesk_dataset_data_type filled = *documents_.current_data_set;
  if (!run_queries(filled, true)) return false;
  executed_.clear(); // they are plain series from now on
  documents_.as_step("Execute all deferred queries", [&] { documents_.take_content(filled); });
  return true;
}

bool run_control::execute_deferred_queries_of(prevesk_dataset_data_type& data_set, std::span<const series_ref> series) {
  return run_queries(data_set, true, [series](const series_ref& it) { return std::ranges::count(series, it) > 0; });
}

void run_control::ask_and_execute_all_deferred_queries() {
  if (!documents_.current_data_set) return;
  const std::uint64_t generation = documents_.generation();
  const box_answer answer =
      ui_.message_box("Execute all deferred queries?",
                      "This will execute all deferred queries and place the query results\r\n"
                      " in the appropriate tables within the VKI file. Are you sure that\r\n you wish to do this?",
                      box_buttons::yes_no);
  if (answer == box_answer::yes && !documents_.is_replaced_since(generation, "No query was executed."))
    execute_all_deferred_queries();
}

} // namespace vesk
