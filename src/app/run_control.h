// The engine's jobs in the main form: launchers, ends, priority, progress and the results grid.
//
// At most one job runs at a time. It works on a copy of the data set. A run and an export return nothing; at the end of
// any other job the copy replaces the data set.
#pragma once

#include "app/configuration.h"
#include "app/document_control.h"
#include "app/job_outcome.h"
#include "app/kept_results.h"
#include "app/main_form_services.h"
#include "app/priority_control.h"
#include "app/results_grid.h"
#include "app/run_recorder.h"
#include "engine/job_front_end.h"
#include "engine/model_thread.h"
#include "platform/output_lock.h"
#include "query/deferred_queries.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vesk {

// Main thread only, except where a member says otherwise.
class run_control final : private job_front_end {
public:
  // All four must outlive it.
  run_control(user_interface& ui, main_form_services& form, document_control& documents, const configuration& settings);
  ~run_control() override;

  model_thread* active_thread = nullptr;         // the one job; null when idle. It frees itself.
  bool quit_after_run = false;                   // close the main window at the end of a run; used once
  bool run_on_start = false;                     // run at the end of an import; used once
  std::filesystem::path log_file_name;           // the template for the jobs' logs; empty: none
  std::filesystem::path engine_path;             // of the engine library
  query_executor execute_query;                  // executes one stored query in place of the usual way, if it is set
  bool skip_deferred_queries = false;            // run on the stored points
  std::filesystem::path output_folder;           // of a run's results; empty: the data file's
  bool keeps_previous_results = false;           // of the run before, at a good end of a run
  std::unique_ptr<priority_platform> priorities; // of the running job
  std::string_view priority_word;                // of the last change of priority

  // Launchers. Without a data set they do nothing; while a job runs they show the busy box of their row.
  void run_or_cancel();       // starts a run, or cancels the running job
  void launch(job_code code); // any job but a run, on the file of its row, which may ask the user
  void launch(job_code code, const std::string& name);
  void cancel_job();                // asks the running job, if any, to stop
  std::string results_name() const; // what an engine names a run's results after; empty: there are none
  const std::filesystem::path& recorded_base() const { return recorder_.base(); } // of the last run; empty: none
  std::string engine_in_words();                                                  // its file and version
  bool engine_is_bundled() const { return library_ && library_->bundled; }        // the one loaded last
  const job_outcome& last_job() const { return last_job_; }

  // The record of a run. A front end fills in what it knows, and may take the place of the two functions.
  run_record record_head;                                     // copied into each record
  std::optional<prevesk_dataset_data_type> recorded_data_set; // the record's; null: the open one
  std::function<void(const run_record&)> note_start_of_run; // the record so far, before the engine works; may be empty
  std::function<void(run_record)> take_record;              // of a run that has ended; here it is written

  // Loads the engine and hashes what many runs have in common, before processes are forked for them. False: the engine
  // cannot be loaded, reported.
  bool prepare_many_runs();

  // Import and export. An import begins a new document, then starts its job.
  void ask_and_import();
  void import_file(const std::string& name); // the command line's: only .INP
  void ask_and_export();
  void export_file(const std::string& name);

  // Executes the deferred queries of the data set itself, which makes them plain series. False if one failed, which is
  // reported; the data set is then unchanged.
  bool execute_all_deferred_queries();
  void ask_and_execute_all_deferred_queries();
  // The same for these series of a data set that is not the open one. False: failed, reported.
  bool execute_deferred_queries_of(prevesk_dataset_data_type& data_set, std::span<const series_ref> series);

  bool change_priority(int position); // of the running job, 0 to 6; false: refused
  void move_priority_track_bar(int position);
  void show_news(); // progress and grid updates from the job; called by UIUpdateTimer
  double simulation_time() const { return simulation_time_; } // of the running job as last shown; 0: not known
  std::optional<double> results_cell(int row, int column) const { return grid_.cell(row, column); }

  // Diagnostics. Any thread.
  bool logging_enabled() const override { return logging_enabled_; }
  void set_logging_enabled(bool enabled) { logging_enabled_ = enabled; }
  int diagnostic_level() const override { return diagnostic_level_; }
  void set_diagnostic_level(int level) override { diagnostic_level_ = level; }
  int return_code() const { return return_code_; }                         // process exit code, as set by the engine
  void set_window_handle(std::int32_t handle) { window_handle_ = handle; } // for engines; 0 without a window

private:
  struct launcher; // one row per job
  static const launcher launchers[];
  static const launcher& launcher_of(job_code code);
  // Label of the step added at the job's end, such as "Import old.inp"; empty for a job that returns no data set.
  static std::string step_label(job_code code, const std::string& name);

  bool load_engine(); // false: cannot be loaded, which is reported
  bool start_run();
  bool lock_outputs(std::unique_ptr<output_lock>& lock); // of a run; false: refused, and reported
  void note_linked_files(prevesk_dataset_data_type& data_set) const;
  void begin_record();
  void hold_previous_results();
  void note_results(); // of the run that has ended
  void write_record_beside_results(const run_record& record);
  // Executes the deferred queries, or those that are wanted, on a copy, and adds to `executed_`. Nothing: failed or
  // cancelled, which is reported.
  std::optional<prevesk_dataset_data_type> run_queries(const prevesk_dataset_data_type& data_set, bool clear_flags,
                                                       const std::function<bool(const series_ref&)>& wanted = {});
  query_executor executor() const;
  bool start_job(const prevesk_dataset_data_type& data_set, const launcher& row, const std::string& name);
  void resume_other_job();
  void begin_import(const std::string& name);
  file_dialog in_data_folder(file_dialog dialog) const; // begins in the folder of the open file

  using end_handler = void (run_control::*)();
  void end_job(end_handler end);
  void note_end_of_job();
  void run_end();
  void import_export_end();
  void validity_end();
  void list_marks(); // what the editors mark, after the findings of a validity check
  void copy_back_end();
  void clear_progress();

  // Results that replace the data set.
  void note_start_of_job(job_code code, const std::string& name);
  void take_back(model_thread& ended);
  void drop_result();
  void report_removed_segments(const prevesk_dataset_data_type& before); // by a new network
  void report_what_was_replaced(const document& before, bool same_document, bool edited);

  // job_front_end
  void add_info_line(const std::string& text, int icon) override; // and selects it
  void clear_info_lines() override { ui_.clear_info_lines(); }
  void set_file_name(const std::string& name) override;
  void initialize_grid(const std::vector<std::string>& column_labels, int rows) override;
  void clear_grid_data() override;
  void hydrodynamic_file_put() override;
  void set_grid_data(const float* data, int actual_columns, int actual_rows, bool invert) override { // any thread
    grid_.set_data(data, actual_columns, actual_rows, invert);
  }
  std::int32_t window_handle() const override { return window_handle_; }              // any thread
  void set_return_code(int code) override { return_code_ = job_return_code_ = code; } // any thread

  user_interface& ui_;
  main_form_services& form_;
  document_control& documents_;
  const configuration& settings_;
  std::shared_ptr<const engine_library> library_;
  struct job_start {                      // the state at the start of a job that replaces the data set
    std::string label;                    // of the step that its end makes
    prevesk_dataset_data_type data_set;   // as copied for the job
    std::uint64_t document = 0;           // its number
    std::optional<std::string> file_name; // before the job put another one
  };
  std::optional<job_start> job_start_;
  std::string replaced_by_import_; // what the last import replaced at its start; empty: nothing
  job_outcome last_job_;
  std::chrono::steady_clock::time_point job_began_;
  std::chrono::steady_clock::time_point priority_refused_; // last, since the job began
  std::unique_ptr<output_lock> output_lock_;               // of the current run
  std::vector<recorded_query> executed_;                   // since the last run began
  run_recorder recorder_;
  previous_results previous_;
  std::vector<recorded_file> written_; // by the last run
  results_grid grid_;
  double simulation_time_ = 0;
  std::atomic<bool> logging_enabled_{false};
  std::atomic<int> diagnostic_level_{0};
  std::atomic<int> return_code_{0};
  std::atomic<int> job_return_code_{0}; // of the running job
  std::atomic<std::int32_t> window_handle_{0};
};

} // namespace vesk
