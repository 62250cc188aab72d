// One call of vesk-run: its tasks in order, the exit status, and the record of its run.
#pragma once

#include "app/main_form.h"
#include "console/chosen_results.h"
#include "console/console_interface.h"
#include "console/options.h"
#include "runs/run_record.h"
#include "runs/run_table.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace vesk {

// The exit statuses of vesk-run without --record and --output-dir. Any other is the engine's return code.
enum : int { exit_good = 0, exit_failure = 1, exit_usage = 2, exit_cancelled = 130, exit_unfit_return_code = 125 };

// Takes the record of a run and the file that it belongs in: before the engine works, and, whole, at the end. Throws
// file_exception.
using record_taker = std::function<void(const std::filesystem::path& file, const run_record& record, bool whole)>;

class session {
public:
  // `head`: what this program knows of itself. `take_record` may be empty: the record is then written at the end.
  session(const console_options& options, console_interface& ui, run_record head, record_taker take_record = {});

  // Does all the work and returns the exit status. Main thread.
  int run();

  // Runs rows of a table, one after the other, each in a child process; all that they have in common is done once.
  // `next_row` gives their numbers until it gives none. Returns the status of the first run that failed. Main thread,
  // while it is the only one.
  int run_rows(const std::function<std::optional<std::size_t>()>& next_row);

private:
  // The outcome of a step of the work, the most serious last. run_failed: in a run, the engine set a return code other
  // than 0, which becomes the exit status. In any other job such a code counts as a failure.
  enum class step { done, run_failed, cancelled, failed };

  void set_up();
  void make_output_folder();
  void try_log();
  void report_log_loss(const std::string& cause); // once
  bool catalogue_is_there();
  step open_files();
  step jobs();
  step job(const std::string& subject, const std::function<void()>& launch);
  step with_data(const char* what, const std::string& subject, const std::function<void()>& launch);
  step run_model();
  void choose_results();
  step cut_results();
  bool has_data(const char* what); // reports if there is none
  step outcome_since(int failures_before) const;
  step set_values();
  step refresh();
  step save();
  void note_failure(const std::string& text, failure_kind kind);
  step fail(const std::string& text, failure_kind kind); // notes and reports it
  step list_paths();
  bool prepare_rows();
  bool row_is_in_table(std::size_t row); // reports if not
  int run_row(std::size_t row, const std::filesystem::path& folder);
  int work_on_row(const record_taker& take_record);
  int end(step result);
  int status_of(step result) const;
  int reported_status_of(step result) const;
  void end_record(step result, int status);
  void note_cause(run_end& end) const;
  std::filesystem::path record_file() const;

  int run_return_code_ = 0;
  job_outcome failed_job_; // the first one that failed
  bool log_loss_told_ = false;
  std::optional<reported_failure> failure_; // the first one that the session itself found
  std::optional<run_record> ended_run_;

  std::vector<chosen_series> chosen_; // of --results; empty: all
  std::optional<run_table> table_;
  std::optional<std::size_t> row_;
  std::optional<prevesk_dataset_data_type> before_queries_; // of many rows

  console_options options_;
  console_interface& ui_;
  record_taker take_record_;
  TPreveskMainForm form_;
};

// The table of --set-from, with the names of --parameters. Throws value_error and file_exception.
run_table read_run_table(const console_options& options, const prevesk_dataset_data_type& data);

// Where the record of a call belongs. `base`: of the results' names; empty where no data set is open.
std::filesystem::path record_file_of(const console_options& options, const std::filesystem::path& base);

} // namespace vesk
