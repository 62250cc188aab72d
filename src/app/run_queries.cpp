// Deferred queries, executed before a run or by the user's command.
#include "app/failure_kinds.h"
#include "app/job_heading.h"
#include "app/run_control.h"
#include "editors/long_work.h"
#include "query/import_query.h"
#include "query/source_file.h"

#include <algorithm>
#include <chrono>

namespace vesk {

namespace {

struct filled_data_set {
  prevesk_dataset_data_type data_set;
  std::vector<recorded_query> executed;
  int without_points = 0; // series whose queries found none
};

// Passes on progress and reports, and notes what was executed. In the thread of the queries.
struct passed_progress final : query_progress {
  passed_progress(user_interface& shown_on, work_progress& seen, std::filesystem::path its_folder)
      : ui(shown_on), work(seen), folder(std::move(its_folder)) {}

  void percent_done(int percent) override {
    work.percent_done(percent);
    work.on_main_thread([&ui = ui, percent] { ui.set_progress(percent); });
  }
  void executed(const std::string& series, const import_query_descriptor& query, const query_report& report) override {
    if (report.points == 0) ++without_points;
    const std::filesystem::path found = find_source_file(query.file_name, folder);
    executed_queries.push_back(
        {.series = series,
         .source = {.file = found.empty() ? query.file_name : std::filesystem::absolute(found).native()},
         .rows = report.rows,
         .points = report.points});
    work.on_main_thread([&ui = ui, series, query, report] { ui.query_executed(series, query, report); });
  }

  user_interface& ui;
  work_progress& work;
  std::filesystem::path folder; // of the data file
  std::vector<recorded_query> executed_queries;
  int without_points = 0;
};

} // namespace

query_executor run_control::executor() const {
  if (execute_query) return execute_query;
  return executor_of_a_pass(documents_.folder());
}

std::optional<prevesk_dataset_data_type>
run_control::run_queries(const prevesk_dataset_data_type& data_set, bool clear_flags,
                         const std::function<bool(const series_ref&)>& wanted) {
  const std::uint64_t generation = documents_.generation();
  std::optional<filled_data_set> filled;
  std::string title = "Error", failure;
  failure_kind kind = failure_kind::data;
  try {
    filled = with_progress(ui_, "Executing the deferred queries", data_set,
                           [execute = executor(), &ui = ui_, folder = documents_.folder(), clear_flags,
                            wanted](prevesk_dataset_data_type& data, work_progress& work) -> filled_data_set {
                             passed_progress progress(ui, work, folder);
                             execute_deferred_queries(data, execute, progress, clear_flags, wanted);
                             return {std::move(data), std::move(progress.executed_queries), progress.without_points};
                           });
  } catch (const live_query_exception& error) {
    title = "Live query error";
    failure = error.what();
    kind = kind_of_failure(error);
  } catch (const std::exception& error) {
    failure = error.what();
    kind = failure_kind::software;
  }
  if (!failure.empty()) {
    form_.note_failure(failure, kind);
    if (!ui_.boxes_stay_in_sight()) ui_.add_info_line(failure, icon_failure);
    ui_.message_box(title, failure, box_buttons::ok);
  } else if (documents_.generation() != generation) {
    ui_.add_info_line("The data set was replaced while its queries were executed. Their results were dropped.",
                      icon_note);
    filled.reset();
  } else if (!filled) {
    ui_.add_info_line("The queries were cancelled. The data set is unchanged.", icon_note);
  } else if (filled->without_points > 0 && !ui_.may_go_on_without_rows(filled->without_points)) {
    form_.note_failure("A query found no values.", kind); // the user interface has given the reason
    filled.reset();
  }
  if (!filled) {
    executed_.clear();
    clear_progress();
    return std::nullopt;
  }
  std::ranges::move(filled->executed, std::back_inserter(executed_));
  return std::move(filled->data_set);
}

bool run_control::execute_all_deferred_queries() {
  const bool is_alone = !active_thread; // otherwise heading and progress bar are those of the running job
  const auto began = std::chrono::steady_clock::now();
  if (is_alone) ui_.begin_job_messages(heading_of_queries(documents_.file_name));
  const auto filled = run_queries(*documents_.current_data_set, true);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
  if (is_alone) {
    ui_.end_job_messages(filled ? outcome_in_words({}, took.count()) : "not executed");
    clear_progress();
  }
  if (!filled) return false;
  executed_.clear(); // they are plain series from now on
  documents_.as_step("Execute all deferred queries", [&] { documents_.take_content(*filled); });
  return true;
}

bool run_control::execute_deferred_queries_of(prevesk_dataset_data_type& data_set, std::span<const series_ref> series) {
  auto filled =
      run_queries(data_set, true, [series](const series_ref& it) { return std::ranges::count(series, it) > 0; });
  if (filled) data_set = std::move(*filled);
  return filled.has_value();
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
