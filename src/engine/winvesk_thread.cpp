#include "engine/winvesk_thread.h"

#include "dataset/text_encoding.h"
#include "platform/side_file.h"
#include "platform/threads.h"
#include "shell/shell_interface.h"

namespace vesk {

winvesk_thread::winvesk_thread(job_front_end& front_end, const std::filesystem::path& log_name)
    : ResizableThread(true), front_end_(front_end), log_path_(log_name) {
  watch_gate(gate());
}

void winvesk_thread::Execute() {
  status_code_ = 0;
  log_line(""); // an empty line, in the file named by the template
  if (log_path_.empty()) return;
  log_path_.replace_filename("LOG" + std::to_string(current_thread_number()) + log_path_.extension().string());
  log_line("--BEGIN LOG FILE--");
}

void winvesk_thread::log_line(std::string_view text) {
  if (log_path_.empty() || log_error_ != 0) return;
  log_error_ = append_to_side_file(log_path_, printable_text(text) + '\n');
}

winvesk_thread::mailbox winvesk_thread::take_mailbox() {
  const std::lock_guard guard(lock_);
  mailbox taken{simulation_time_changed_, grid_changed_, progress_changed_, progress_percent_, simulation_time_, {}};
  if (simulation_time_changed_)
    taken.simulation_time_text = "Simulation Time: " + date_time_text(moment_type::from_date_time(simulation_time_));
  simulation_time_changed_ = grid_changed_ = progress_changed_ = false;
  return taken;
}

std::int32_t winvesk_thread::elapsed_seconds() const {
  return static_cast<std::int32_t>(std::time(nullptr) - start_time_);
}

void winvesk_thread::add_info_line(std::string_view text, std::int32_t icon) {
  Synchronize([&] { front_end_.add_info_line(std::string(text), icon); });
}

void winvesk_thread::clear_info_lines() {
  Synchronize([this] { front_end_.clear_info_lines(); });
}

void winvesk_thread::set_progress(std::int32_t percent) {
  const std::lock_guard guard(lock_);
  progress_percent_ = percent;
  progress_changed_ = true;
}

void winvesk_thread::set_simulation_time(double date_time) {
  const std::lock_guard guard(lock_);
  simulation_time_ = date_time;
  simulation_time_changed_ = true;
}

void winvesk_thread::mark_grid_changed() {
  const std::lock_guard guard(lock_);
  grid_changed_ = true;
}

void winvesk_thread::set_status(std::string_view description, std::int32_t status) {
  status_code_ = status;
  log_line(description);
}

void winvesk_thread::initialize_grid(std::vector<std::string> column_labels, std::int32_t rows) {
  Synchronize([&] { front_end_.initialize_grid(column_labels, rows); });
}

void winvesk_thread::set_grid_data(const float* data, std::int32_t actual_columns, std::int32_t actual_rows,
                                   bool invert) {
  grid_data_is_set_ = data != nullptr;
  front_end_.set_grid_data(data, actual_columns, actual_rows, invert);
}

void winvesk_thread::clear_grid_data() {
  grid_data_is_set_ = false;
  Synchronize([this] { front_end_.clear_grid_data(); });
}

void winvesk_thread::request_read_hyd_file() {
  Synchronize([this] { front_end_.hydrodynamic_file_put(); });
}

void winvesk_thread::fail(std::string_view cause) {
  shell().log(cause);
  if (failed_.exchange(true)) return; // the first cause counts
  failure_ = cause;
  try {
    add_info_line(cause, 2);
  } catch (...) { // the front end cannot show it; the job has failed anyway
  }
}

} // namespace vesk
