// The reusable part of a job: its log, status, mailbox, info lines and results grid.
#pragma once

#include "engine/job_front_end.h"
#include "engine/stack_thread.h"
#include "shell/job.h"

#include <ctime>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace vesk {

class winvesk_thread : public ResizableThread, public engine_job {
public:
  // Created suspended. `log_name`: template of the log's name; empty for no log. `front_end` must outlive the job.
  winvesk_thread(job_front_end& front_end, const std::filesystem::path& log_name);

  // News from the worker for the main window; reading clears the flags. Main thread.
  struct mailbox {
    bool simulation_time_changed = false;
    bool grid_changed = false;
    bool progress_changed = false;
    int progress_percent = 0;
    double simulation_time = 0;       // a date-time number, the last one known
    std::string simulation_time_text; // "Simulation Time: " and the date, when simulation_time_changed
  };
  mailbox take_mailbox();

  int status_code() const { return status_code_; }       // once the job has ended
  std::time_t start_time() const { return start_time_; } // seconds since 1970
  const std::filesystem::path& log_path() const { return log_path_; }
  int log_error() const { return log_error_; } // the system's, for the first line lost; once the job has ended

  // Why the job failed, by an exception in the engine or in a keyword; empty if it has not. Once the job has ended.
  const std::string& failure() const { return failure_; }

  int priority_position = 3; // of the priority track bar, 0 to 6; main thread only

  // For keyword handlers.
  bool cancel_requested() const override { return Terminated() || failed_.load(std::memory_order_relaxed); }
  std::int32_t elapsed_seconds() const override;
  void add_info_line(std::string_view text, std::int32_t icon) override;
  void clear_info_lines() override;
  void set_progress(std::int32_t percent) override;
  void set_simulation_time(double date_time) override;
  void mark_grid_changed() override;
  void set_status(std::string_view description, std::int32_t status) override;
  void initialize_grid(std::vector<std::string> column_labels, std::int32_t rows) override;
  void set_grid_data(const float* data, std::int32_t actual_columns, std::int32_t actual_rows, bool invert) override;
  void clear_grid_data() override;
  std::int32_t diagnostic_level() const override { return front_end_.diagnostic_level(); }
  void set_diagnostic_level(std::int32_t level) override { front_end_.set_diagnostic_level(level); }
  std::int32_t window_handle() const override { return front_end_.window_handle(); }
  void set_return_code(std::int32_t code) override { front_end_.set_return_code(code); }
  void request_read_hyd_file() override;
  bool logging_enabled() const override { return front_end_.logging_enabled(); }
  void log_line(std::string_view text) override;
  bool has_log() const override { return !log_path_.empty(); }
  void fail(std::string_view cause) override;

protected:
  // Begins every job: status 0, the log's unique name and its first line. Derived classes call it first.
  void Execute() override;
  void wait_at_gate() override { ResizableThread::wait_at_gate(); }

  job_front_end& front_end() { return front_end_; }
  bool grid_data_is_set() const { return grid_data_is_set_; }

private:
  job_front_end& front_end_;
  int log_error_ = 0; // worker only; no line is logged after a lost one
  std::filesystem::path log_path_;
  int status_code_ = 0;           // worker only
  bool grid_data_is_set_ = false; // worker only
  std::string failure_;           // worker only
  std::atomic<bool> failed_{false};
  const std::time_t start_time_ = std::time(nullptr);

  std::mutex lock_; // guards the rest
  int progress_percent_ = 0;
  double simulation_time_ = 0; // converted to text only when shown
  bool simulation_time_changed_ = false;
  bool grid_changed_ = false;
  bool progress_changed_ = false;
};

} // namespace vesk
