// What the keyword layer needs from its job.
#pragma once

#include "dataset/dataset.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class shell_interface;

// The engine's arrays filled by DAYS. Borrowed: the engine owns them and keeps them until its function returns. Null
// means not registered. Their sizes are not known here; the engine guarantees them.
struct registered_arrays {
  float* time_functions = nullptr;      // element ISC - 1
  float* loads = nullptr;               // element segment * number of systems + system number - 1
  float* boundary_conditions = nullptr; // as for loads
  float* flows = nullptr;               // element function * 6 + field
  float* exchanges = nullptr;           // element function * 6 + field
  float* print_interval = nullptr;      // one element

  friend bool operator==(const registered_arrays&, const registered_arrays&) = default;
};

// A job, as keyword handlers see it. All members are called on the thread that calls the callback, one call at a time.
class engine_job {
public:
  virtual ~engine_job() = default;

  // The job's private copy of the data set; always the same object during an engine_job_scope of the job.
  virtual prevesk_dataset_data_type& data_set() = 0;
  // The job's keyword interface, owned by the job.
  virtual shell_interface& shell() = 0;
  virtual registered_arrays& arrays() = 0;

  virtual bool is_import() const = 0; // the import job, code 0
  virtual bool cancel_requested() const = 0;
  virtual std::int32_t elapsed_seconds() const = 0; // since the job was created

  // The job's file: the data file, or the one to import, export or load. Setting it notifies the front end.
  virtual std::string input_file_name() const = 0;
  virtual void set_file_name(std::string_view name) = 0;

  // Lines for the user. Each call waits until the front end has accepted the line.
  virtual void add_info_line(std::string_view text, std::int32_t icon) = 0; // icon 0 plain, 1 note, 2 failure
  virtual void clear_info_lines() = 0;

  // Stored in a mailbox that the front end empties when it has time.
  virtual void set_progress(std::int32_t percent) = 0;
  virtual void set_simulation_time(double date_time) = 0; // a date-time number
  virtual void mark_grid_changed() = 0;

  virtual void set_status(std::string_view description, std::int32_t status) = 0;

  // The results grid. `data` is borrowed until `clear_grid_data`.
  virtual void initialize_grid(std::vector<std::string> column_labels, std::int32_t rows) = 0;
  virtual void set_grid_data(const float* data, std::int32_t actual_columns, std::int32_t actual_rows, bool invert) = 0;
  virtual void clear_grid_data() = 0;

  // Services of the front end.
  virtual std::int32_t diagnostic_level() const = 0; // 0 none, 1 moderate, 2 full
  virtual void set_diagnostic_level(std::int32_t level) = 0;
  virtual std::int32_t window_handle() const = 0;
  virtual void set_return_code(std::int32_t code) = 0;
  virtual void request_read_hyd_file() = 0; // a job is running then, so this ends with the front end's busy message

  // True while the user has logging switched on: the callback then traces each call.
  virtual bool logging_enabled() const = 0;
  // Appends one line to the job's log file, if it has one. Never fails.
  virtual void log_line(std::string_view text) = 0;
  // True if the job has a log file, so that texts for it are needed. Read once at the start of an engine_job_scope.
  virtual bool has_log() const = 0;

  // Pauses here while the user has paused or slowed down the job. Each call of the callback passes it.
  void pass_gate() {
    if (gate_closed().load(std::memory_order_relaxed)) wait_at_gate();
  }
  const std::atomic<bool>& gate_closed() const { return *gate_; } // the same during an engine_job_scope

  // Called when an exception would have left the callback. From then on CANCEL answers 1, and the job counts as failed.
  virtual void fail(std::string_view cause) = 0;

protected:
  // Sets the flag that says whether to wait at the gate; without a flag the gate is always open.
  void watch_gate(const std::atomic<bool>& closed) { gate_ = &closed; }
  virtual void wait_at_gate() {}

private:
  static constexpr std::atomic<bool> always_open_{false};
  const std::atomic<bool>* gate_ = &always_open_;
};

// While it exists, sets the job for calls from the calling thread and from any thread without a job.
class engine_job_scope {
public:
  explicit engine_job_scope(engine_job& job);
  ~engine_job_scope();
  engine_job_scope(const engine_job_scope&) = delete;
  engine_job_scope& operator=(const engine_job_scope&) = delete;

private:
  shell_interface* previous_own_;
  shell_interface* previous_active_;
};

} // namespace vesk
