// The main window's side of the jobs: launching, what comes back at the end, the timer.
//
// A run works on a copy and nothing of it comes back. Every other job but an export copies its data set back.
#include "app/main_form.h"

#include "app/file_names.h"
#include "app/time_remaining.h"
#include "app/worker_priority.h"
#include "platform/file_io.h"

#include <ctime>
#include <utility>

namespace vesk {

namespace {

// What a launcher says while another job runs.
struct busy_box {
  job_code code;
  const char* title;
  const char* text;
};

constexpr busy_box busy_boxes[] = {
    {job_code::import_file, "Cannot Import/Export now", "The import/export thread is busy. Try again later."},
    {job_code::export_file, "Cannot Import/Export now", "The import/export thread is busy. Try again later."},
    {job_code::get_maximum_parameters, "Cannot determine parameters now",
     "The parameter thread is busy. Try again later."},
    {job_code::read_hyd_file, "Cannot read hyd file now", "The read hyd file thread is busy. Try again later."},
    {job_code::import_network, "Cannot import network now", "The import network thread is busy. Try again later."},
    {job_code::load_restart_file, "Cannot load restart file now",
     "The load restart file thread is busy. Try again later."},
};

constexpr int stopped_position = 0; // of the priority track bar

const file_dialog network_dialog{file_dialog::kind::open, "Import Network", "Vesk Network Files (*.vkn)|*.vkn", ""};
const file_dialog restart_dialog{file_dialog::kind::open, "Select restart file to open",
                                 "Vesk Restart Files (*.rst)|*.rst", ""};

} // namespace

bool TPreveskMainForm::refuse_when_busy(job_code code) {
  if (!active_thread) return false;
  for (const busy_box& box : busy_boxes)
    if (box.code == code) ui_.message_box(box.title, box.text, box_buttons::ok);
  return true;
}

bool TPreveskMainForm::load_engine() {
  try {
    if (!library_ || library_->path != engine_path) library_ = engine_library::load(engine_path);
    return true;
  } catch (const engine_library_exception& error) {
    report_failure(error.what());
    return false;
  }
}

bool TPreveskMainForm::start_job(const prevesk_dataset_data_type& data_set, job_code code, const std::string& name,
                                 void (TPreveskMainForm::*end_handler)()) {
  if (!load_engine()) return false;
  try {
    const auto log_name = logging_enabled() ? log_file_name : std::filesystem::path();
    std::error_code ignored; // logging never fails aloud
    if (!log_name.empty()) std::filesystem::create_directories(log_name.parent_path(), ignored);
    job_front_end& front_end = *this;
    auto thread = std::make_unique<model_thread>(front_end, library_, data_set, code, name, log_name);
    priorities = std::make_unique<worker_priority>(*thread);
    thread->OnTerminate = [this, end_handler](ResizableThread*) { end_job(end_handler); };
    thread->FreeOnTerminate = true;
    active_thread = thread.release();
  } catch (const std::exception& error) {
    report_failure(error.what());
    return false;
  }
  last_job_ = {};
  last_job_.code = code;
  job_return_code_ = 0;
  priority_refused_ = {};
  note_start_of_job(code, name);
  return true;
}

// The job frees itself after this, whatever comes of its end; the end handler may have started another one by then.
void TPreveskMainForm::end_job(void (TPreveskMainForm::*end_handler)()) {
  const model_thread* const ended = active_thread;
  output_lock_.reset(); // a run's results are in their place
  try {
    note_end_of_job();
    priorities.reset();
    (this->*end_handler)();
  } catch (const std::exception& error) {
    if (active_thread == ended) active_thread = nullptr;
    ui_.show_run_controls(false);
    clear_progress();
    update_menus();
    report_failure(error.what());
  }
}

void TPreveskMainForm::note_end_of_job() {
  last_job_.cancelled = active_thread->Terminated();
  last_job_.failure = active_thread->failure();
  last_job_.return_code = job_return_code_;
  if (const int error = active_thread->log_error())
    last_job_.log_loss = file_failure("write", active_thread->log_path().native(), error);
  if (!active_thread->FatalException || last_job_.failed()) return;
  try {
    std::rethrow_exception(active_thread->FatalException);
  } catch (const std::exception& error) {
    last_job_.failure = std::string("The job failed: ") + error.what();
  } catch (...) {
    last_job_.failure = "The job failed with an exception of an unknown kind.";
  }
  ui_.add_info_line(last_job_.failure, icon_failure);
}

void TPreveskMainForm::RunModelButtonClick() {
  if (active_thread) return cancel_job();
  run_on_start = false;
  if (!start_run()) quit_after_run = false; // whoever has seen why goes on working in the window
}

bool TPreveskMainForm::start_run() {
  if (!current_data_set) return false;
  if (const std::string fault = current_data_set->period_fault(); !fault.empty()) {
    report_failure(fault + ".");
    return false;
  }
  prevesk_dataset_data_type copy = *current_data_set;
  std::unique_ptr<output_lock> lock; // before the queries, which may take long
  if (!lock_outputs(lock)) return false;
  copy.reset_cursors();
  if (!skip_deferred_queries && !run_queries(copy, false)) return false;
  clear_progress(); // of the queries
  if (!start_job(copy, job_code::run, file_name, &TPreveskMainForm::run_end)) return false;
  output_lock_ = std::move(lock);
  ui_.show_run_controls(true);
  ui_.set_priority_position(active_thread->priority_position);
  active_thread->Resume();
  update_menus();
  return true;
}

// Whatever the engine is, its results are named after the data file. A data set without one has no place for results.
bool TPreveskMainForm::lock_outputs(std::unique_ptr<output_lock>& lock) {
  if (file_name.empty()) return true;
  try {
    lock = std::make_unique<output_lock>(std::filesystem::path(file_name).replace_extension());
  } catch (const std::exception& error) {
    report_failure(error.what());
    return false;
  }
  if (!lock->warning().empty()) ui_.add_info_line(lock->warning(), icon_note);
  return true;
}

void TPreveskMainForm::cancel_job() {
  if (!active_thread) return;
  ui_.add_info_line("Terminating model thread... please wait...", icon_plain);
  if (active_thread->priority_position == stopped_position)
    ui_.add_info_line("The model is stopped. It ends once its priority is no longer \"Stop\".", icon_note);
  active_thread->Terminate();
}

void TPreveskMainForm::clear_progress() {
  ui_.set_progress(0);
  ui_.set_info_label("");
  ui_.set_time_remaining_label("");
}

void TPreveskMainForm::run_end() {
  active_thread = nullptr;
  ui_.show_run_controls(false);
  if (!settings.RunTimeGridAlwaysVisible) ui_.show_results_grid(false);
  clear_progress();
  update_menus();
  if (std::exchange(quit_after_run, false)) ui_.close_main_window();
}

// The cancel button can be used from here on. All other commands stay as they are, since only the busy boxes are to
// stop a second job.
void TPreveskMainForm::resume_other_job() {
  command_conditions now = conditions();
  now.idle = true;
  ui_.set_commands(now);
  active_thread->Resume();
}

void TPreveskMainForm::start_import_export(bool import) {
  if (!current_data_set) return;
  const job_code code = import ? job_code::import_file : job_code::export_file;
  if (refuse_when_busy(code)) return;
  if (start_job(*current_data_set, code, import_file_name, &TPreveskMainForm::import_export_end)) resume_other_job();
}

void TPreveskMainForm::import_export_end() {
  clear_progress();
  const bool imported = active_thread->code() == job_code::import_file;
  if (imported) take_back();
  active_thread = nullptr;
  update_menus();
  const std::string fault = imported && !last_job_.cancelled ? current_data_set->period_fault() : std::string();
  if (!fault.empty()) report_failure(fault + ".");
  if (!run_on_start) return;
  if (last_job_.cancelled || last_job_.failed() || !fault.empty()) // nothing whole to run
    run_on_start = quit_after_run = false;
  else
    RunModelButtonClick();
}

void TPreveskMainForm::start_validity_check() {
  if (!current_data_set) return;
  if (refuse_when_busy(job_code::get_maximum_parameters)) return;
  if (start_job(*current_data_set, job_code::get_maximum_parameters, file_name, &TPreveskMainForm::validity_end))
    resume_other_job();
}

void TPreveskMainForm::validity_end() {
  clear_progress();
  take_back();
  if (last_job_.cancelled || last_job_.failed()) { // the engine has not told its limits: nothing to hold against
    last_job_.checked = false;
    active_thread = nullptr;
    return update_menus();
  }
  last_job_.checked = current_data_set->check_limits(split_file_name(file_name).folder);
  if (last_job_.checked)
    ui_.message_box("Validity check passed", "No problems were detected", box_buttons::ok);
  else
    ui_.message_box("Validity check failed", "Problems were detected", box_buttons::ok);
  for (const validation_information& finding : current_data_set->validation_results)
    ui_.add_info_line(finding.message, finding.severity);
  active_thread = nullptr;
  update_menus();
}

void TPreveskMainForm::start_read_hyd_file() {
  if (!current_data_set) return;
  if (refuse_when_busy(job_code::read_hyd_file)) return;
  update_menus();
  if (start_job(*current_data_set, job_code::read_hyd_file, file_name, &TPreveskMainForm::copy_back_end))
    resume_other_job();
}

// The job that puts the name is the one that is busy.
void TPreveskMainForm::hydrodynamic_file_put() {
  start_read_hyd_file();
  ui_.hydrodynamic_file_named();
}

void TPreveskMainForm::start_import_network() {
  if (const auto name = ui_.ask_file(network_dialog)) start_import_network(*name);
}

void TPreveskMainForm::start_import_network(const std::string& name) {
  if (!current_data_set) return;
  if (refuse_when_busy(job_code::import_network)) return;
  update_menus();
  if (start_job(*current_data_set, job_code::import_network, name, &TPreveskMainForm::copy_back_end))
    resume_other_job();
}

void TPreveskMainForm::start_load_restart_file() {
  if (const auto name = ui_.ask_file(restart_dialog)) start_load_restart_file(*name);
}

void TPreveskMainForm::start_load_restart_file(const std::string& name) {
  if (!current_data_set) return;
  if (refuse_when_busy(job_code::load_restart_file)) return;
  update_menus();
  if (start_job(*current_data_set, job_code::load_restart_file, name, &TPreveskMainForm::copy_back_end))
    resume_other_job();
}

void TPreveskMainForm::copy_back_end() {
  clear_progress();
  take_back();
  active_thread = nullptr;
  update_menus();
}

bool TPreveskMainForm::run_queries(prevesk_dataset_data_type& data_set, bool clear_flags) {
  struct : query_progress {
    user_interface* ui;
    int without_points = 0;
    void percent_done(int percent) override { ui->set_progress(percent); }
    void executed(const std::string& series, const import_query_descriptor& query,
                  const query_report& report) override {
      if (report.points == 0) ++without_points;
      ui->query_executed(series, query, report);
    }
  } progress;
  progress.ui = &ui_;
  std::string title = "Error", failure;
  ui_.set_busy(true);
  try {
    execute_deferred_queries(data_set, execute_query, progress, clear_flags);
  } catch (const live_query_exception& error) {
    title = "Live query error";
    failure = error.what();
  } catch (const std::exception& error) {
    failure = error.what();
  }
  ui_.set_busy(false);
  if (failure.empty() && (progress.without_points == 0 || ui_.may_go_on_without_rows(progress.without_points)))
    return true;
  ++failures_;
  clear_progress();
  if (failure.empty()) return false; // the user interface has said why
  if (!ui_.boxes_stay_in_sight()) ui_.add_info_line(failure, icon_failure);
  ui_.message_box(title, failure, box_buttons::ok);
  return false;
}

bool TPreveskMainForm::execute_all_deferred_queries() {
  prevesk_dataset_data_type filled = *current_data_set;
  if (!run_queries(filled, true)) return false;
  as_step("Execute all deferred queries", [&] { take_content(filled); });
  return true;
}

void TPreveskMainForm::ExectutealldeferredqueriesItemClick() {
  if (!current_data_set) return;
  const std::uint64_t generation = generation_;
  const box_answer answer =
      ui_.message_box("Execute all deferred queries?",
                      "This will execute all deferred queries and place the query results\r\n"
                      " in the appropriate tables within the VKI file. Are you sure that\r\n you wish to do this?",
                      box_buttons::yes_no);
  if (answer == box_answer::yes && !is_replaced_since(generation, "No query was executed."))
    execute_all_deferred_queries();
}

bool TPreveskMainForm::change_priority(int position) {
  if (!active_thread || !priorities) return false;
  if (!vesk::change_priority(position, active_thread->priority_position, *priorities)) return false;
  priority_word = priority_words[position];
  return true;
}

// A drag, a held key and a held mouse button are many changes. Refusals that follow each other closely are one.
void TPreveskMainForm::PriorityTrackBarChange(int position) {
  if (!active_thread || change_priority(position)) return;
  ui_.set_priority_position(active_thread->priority_position);
  const auto now = std::chrono::steady_clock::now();
  if (now - std::exchange(priority_refused_, now) < std::chrono::seconds(1)) return;
  ui_.add_info_line("Could not change model priority", icon_failure);
}

void TPreveskMainForm::UpdateTimerTimer() {
  if (!active_thread) return;
  const winvesk_thread::mailbox news = active_thread->take_mailbox();
  if (news.progress_changed) {
    ui_.set_progress(news.progress_percent);
    const auto elapsed = static_cast<int>(std::time(nullptr) - active_thread->start_time());
    ui_.set_time_remaining_label(time_remaining_text(elapsed, news.progress_percent));
  }
  if (news.simulation_time_changed) ui_.set_info_label(news.simulation_time_text);
  if (news.grid_changed) {
    ui_.show_results_grid(true);
    ui_.repaint_results_grid();
  }
}

void TPreveskMainForm::initialize_grid(const std::vector<std::string>& column_labels, int rows) {
  grid_rows_ = rows;
  ui_.initialize_grid(column_labels, rows);
}

void TPreveskMainForm::set_grid_data(const float* data, int actual_columns, int actual_rows, bool invert) {
  const std::lock_guard guard(grid_lock_);
  grid_data = data;
  grid_actual_columns = actual_columns;
  grid_actual_rows = actual_rows;
  grid_invert = invert;
}

void TPreveskMainForm::clear_grid_data() {
  {
    const std::lock_guard guard(grid_lock_);
    grid_data = nullptr;
    grid_actual_columns = grid_actual_rows = 0;
    grid_invert = false;
  }
  ui_.repaint_results_grid();
}

std::optional<double> TPreveskMainForm::ResultsTableGetCellData(int row, int column) const {
  const std::lock_guard guard(grid_lock_);
  if (!grid_data || row < 0 || row >= grid_rows_ || column < 0) return {};
  // Both ways of laying it out step by the columns; the rows only bound it.
  const int inner = grid_invert ? row : column, outer = grid_invert ? column : row;
  if (inner >= grid_actual_columns || outer >= grid_actual_rows) return {}; // more than the engine's array has
  return static_cast<double>(grid_data[inner + std::ptrdiff_t{outer} * grid_actual_columns]);
}

} // namespace vesk
