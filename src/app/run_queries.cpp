// Deferred queries, executed before a run or by the user's command.
#include "app/busy_cursor.h"
#include "app/run_control.h"

namespace vesk {

namespace {

// Shows progress and reports, and counts series without points.
struct shown_progress final : query_progress {
  explicit shown_progress(user_interface& shown_on) : ui(shown_on) {}

  void percent_done(int percent) override { ui.set_progress(percent); }
  void executed(const std::string& series, const import_query_descriptor& query, const query_report& report) override {
    if (report.points == 0) ++without_points;
    ui.query_executed(series, query, report);
  }

  user_interface& ui;
  int without_points = 0;
};

} // namespace

bool run_control::run_queries(prevesk_dataset_data_type& data_set, bool clear_flags) {
  shown_progress progress(ui_);
  std::string title = "Error", failure;
  try {
    const busy_cursor busy(ui_);
    execute_deferred_queries(data_set, execute_query, progress, clear_flags);
  } catch (const live_query_exception& error) {
    title = "Live query error";
    failure = error.what();
  } catch (const std::exception& error) {
    failure = error.what();
  }
  if (failure.empty() && (progress.without_points == 0 || ui_.may_go_on_without_rows(progress.without_points)))
    return true;
  form_.count_failure();
  clear_progress();
  if (failure.empty()) return false; // the user interface has given the reason
  if (!ui_.boxes_stay_in_sight()) ui_.add_info_line(failure, icon_failure);
  ui_.message_box(title, failure, box_buttons::ok);
  return false;
}

bool run_control::execute_all_deferred_queries() {
  prevesk_dataset_data_type filled = *documents_.current_data_set;
  if (!run_queries(filled, true)) return false;
  documents_.as_step("Execute all deferred queries", [&] { documents_.take_content(filled); });
  return true;
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
