#include "app/run_control.h"

#include "app/failure_kinds.h"
#include "app/file_names.h"
#include "app/job_heading.h"
#include "app/time_remaining.h"
#include "app/worker_priority.h"
#include "editors/long_work.h"
#include "platform/file_io.h"
#include "platform/file_lookup.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace vesk {

namespace {

enum class job_file { data_file, import_file, asked }; // the file passed to the job

constexpr const char* import_export_title = "Cannot Import/Export now";
constexpr const char* import_export_busy = "The import/export thread is busy. Try again later.";

constexpr int stopped_position = 0; // of the priority track bar

const file_dialog network_dialog{file_dialog::kind::open, "Import Network", "Vesk Network Files (*.vkn)|*.vkn", ""};
const file_dialog restart_dialog{file_dialog::kind::open, "Select restart file to open",
                                 "Vesk Restart Files (*.rst)|*.rst", ""};

} // namespace

struct run_control::launcher {
  job_code code;
  end_handler end;
  job_file file;
  const char* step = nullptr; // of the history, added at the job's end; null: the job returns no data set
  const char* busy_title = nullptr;
  const char* busy_text = nullptr;
  bool updates_menus = false; // before the start
  const file_dialog* dialog = nullptr;
};

const run_control::launcher run_control::launchers[] = {
    {.code = job_code::import_file,
     .end = &run_control::import_export_end,
     .file = job_file::import_file,
     .step = "Import",
     .busy_title = import_export_title,
     .busy_text = import_export_busy},
    {.code = job_code::export_file,
     .end = &run_control::import_export_end,
     .file = job_file::import_file,
     .busy_title = import_export_title,
     .busy_text = import_export_busy},
    {.code = job_code::run, .end = &run_control::run_end, .file = job_file::data_file}, // start_run launches it
    {.code = job_code::get_maximum_parameters,
     .end = &run_control::validity_end,
     .file = job_file::data_file,
     .step = "Validity check",
     .busy_title = "Cannot determine parameters now",
     .busy_text = "The parameter thread is busy. Try again later."},
    {.code = job_code::read_hyd_file,
     .end = &run_control::copy_back_end,
     .file = job_file::data_file,
     .step = "Read hydrodynamic file",
     .busy_title = "Cannot read hyd file now",
     .busy_text = "The read hyd file thread is busy. Try again later.",
     .updates_menus = true},
    {.code = job_code::import_network,
     .end = &run_control::copy_back_end,
     .file = job_file::asked,
     .step = "Import network",
     .busy_title = "Cannot import network now",
     .busy_text = "The import network thread is busy. Try again later.",
     .updates_menus = true,
     .dialog = &network_dialog},
    {.code = job_code::load_restart_file,
     .end = &run_control::copy_back_end,
     .file = job_file::asked,
     .step = "Load restart file",
     .busy_title = "Cannot load restart file now",
     .busy_text = "The load restart file thread is busy. Try again later.",
     .updates_menus = true,
     .dialog = &restart_dialog},
};

const run_control::launcher& run_control::launcher_of(job_code code) {
  return *std::ranges::find(launchers, code, &launcher::code);
}

std::string run_control::step_label(job_code code, const std::string& name) {
  const launcher& row = launcher_of(code);
  if (!row.step) return {};
  return row.file == job_file::data_file ? row.step : row.step + (" " + leaf_of(name));
}

run_control::run_control(user_interface& ui, main_form_services& form, document_control& documents,
                         const configuration& settings)
    : engine_path(engine_library::default_path()), ui_(ui), form_(form), documents_(documents), settings_(settings) {
  take_record = [this](const run_record& record) { write_record_beside_results(record); };
}

// A run writes its results until the process ends, which also releases the lock.
run_control::~run_control() {
  if (active_thread) static_cast<void>(output_lock_.release());
}

void run_control::launch(job_code code) {
  const launcher& row = launcher_of(code);
  if (row.file == job_file::asked) {
    if (const auto name = ui_.ask_file(in_data_folder(*row.dialog))) launch(code, *name);
  } else {
    launch(code, row.file == job_file::data_file ? documents_.file_name : documents_.import_file_name);
  }
}

void run_control::launch(job_code code, const std::string& name) {
  if (!documents_.current_data_set) return;
  const launcher& row = launcher_of(code);
  if (active_thread) {
    ui_.message_box(row.busy_title, row.busy_text, box_buttons::ok);
    return;
  }
  if (row.updates_menus) form_.update_menus();
  if (start_job(*documents_.current_data_set, row, name)) resume_other_job();
}

// Enables the cancel button. All other commands stay enabled: a second job is only prevented by the busy boxes.
void run_control::resume_other_job() {
  command_conditions now = form_.conditions();
  now.idle = true;
  ui_.set_commands(now);
  active_thread->Resume();
}

bool run_control::load_engine() {
  try {
    if (!library_ || library_->path != engine_path) library_ = engine_library::load(engine_path);
    return true;
  } catch (const engine_library_exception& error) {
    form_.report_failure(error.what(), kind_of_failure(error));
    return false;
  }
}

std::string run_control::engine_in_words() {
  const std::string file = std::filesystem::absolute(engine_path).lexically_normal().native();
  try {
    const auto library = library_ && library_->path == engine_path ? library_ : engine_library::load(engine_path);
    return file + ", " + (library->version.empty() ? "version not stated" : "version " + library->version);
  } catch (const engine_library_exception&) {
    return file + ", which cannot be loaded";
  }
}

bool run_control::start_job(const prevesk_dataset_data_type& data_set, const launcher& row, const std::string& name) {
  if (!load_engine()) return false;
  try {
    const auto log_name = logging_enabled() ? log_file_name : std::filesystem::path();
    std::error_code ignored; // a job without a log is better than none
    if (!log_name.empty()) std::filesystem::create_directories(log_name.parent_path(), ignored);
    job_front_end& front_end = *this;
    auto thread = std::make_unique<model_thread>(front_end, library_, data_set, row.code, name, log_name);
    priorities = std::make_unique<worker_priority>(*thread);
    thread->OnTerminate = [this, end = row.end](ResizableThread*) { end_job(end); };
    thread->FreeOnTerminate = true;
    active_thread = thread.release();
  } catch (const std::exception& error) {
    form_.report_failure(error.what(), kind_of_failure(error));
    return false;
  }
  last_job_ = {};
  last_job_.code = row.code;
  job_return_code_ = 0;
  priority_refused_ = {};
  if (row.code != job_code::run) { // a run's messages began with its queries
    job_began_ = std::chrono::steady_clock::now();
    ui_.begin_job_messages(heading_of_job(row.code, name));
  }
  note_start_of_job(row.code, name);
  return true;
}

void run_control::run_or_cancel() {
  if (active_thread) return cancel_job();
  run_on_start = false;
  if (!start_run()) quit_after_run = false; // the user has been informed, and continues in the window
}

bool run_control::start_run() {
  if (!documents_.current_data_set) return false;
  if (const std::string fault = documents_.current_data_set->period_fault(); !fault.empty()) {
    form_.report_failure(fault + ".", failure_kind::data);
    return false;
  }
  prevesk_dataset_data_type copy = *documents_.current_data_set;
  std::unique_ptr<output_lock> lock; // taken before the queries, which may be slow
  if (!lock_outputs(lock)) return false;
  copy.reset_cursors();
  job_began_ = std::chrono::steady_clock::now();
  ui_.begin_job_messages(heading_of_job(job_code::run, documents_.file_name));
  if (!skip_deferred_queries) {
    auto filled = run_queries(copy, false);
    if (!filled) {
      ui_.end_job_messages("not started");
      return false;
    }
    copy = std::move(*filled);
  }
  clear_progress(); // of the queries
  note_linked_files(copy);
  hold_previous_results();
  if (!start_job(copy, launcher_of(job_code::run), results_name())) {
    previous_.drop();
    ui_.end_job_messages("not started");
    return false;
  }
  begin_record();
  output_lock_ = std::move(lock);
  ui_.show_run_controls(true);
  ui_.set_priority_position(active_thread->priority_position);
  active_thread->Resume();
  form_.update_menus();
  return true;
}

// Every engine names its results after the data file, so a data set without a file cannot have results.
std::string run_control::results_name() const {
  if (output_folder.empty() || documents_.file_name.empty()) return documents_.file_name;
  return (output_folder / leaf_of(documents_.file_name)).native();
}

bool run_control::lock_outputs(std::unique_ptr<output_lock>& lock) {
  const std::string name = results_name();
  if (name.empty()) return true;
  try {
    lock = std::make_unique<output_lock>(std::filesystem::path(name).replace_extension());
  } catch (const std::exception& error) {
    form_.report_failure(error.what(), kind_of_failure(error));
    return false;
  }
  if (!lock->warning().empty()) ui_.add_info_line(lock->warning(), icon_note);
  return true;
}

// An engine looks for them beside the file that it is named.
void run_control::note_linked_files(prevesk_dataset_data_type& data_set) const {
  if (output_folder.empty()) return;
  for (std::string prevesk_dataset_data_type::*const member :
       {&prevesk_dataset_data_type::hydrodynamic_file, &prevesk_dataset_data_type::nps_file}) {
    const std::filesystem::path found = find_file(data_set.*member, split_file_name(documents_.file_name).folder);
    if (!found.empty()) data_set.*member = std::filesystem::absolute(found).native();
  }
}

void run_control::begin_record() {
  const std::string name = results_name();
  recorder_.begin(record_head,
                  {.data_set = recorded_data_set ? *recorded_data_set : *documents_.current_data_set,
                   .data_file = documents_.file_name,
                   .base = name.empty() ? std::filesystem::path() : std::filesystem::path(name).replace_extension(),
                   .engine = library_->path,
                   .queries = std::exchange(executed_, {})});
  if (note_start_of_run) note_start_of_run(recorder_.record());
}

// The copy is made behind a box, since results can be large.
void run_control::hold_previous_results() {
  const std::string name = results_name();
  if (!keeps_previous_results || name.empty()) return;
  const auto copy = [this](const std::filesystem::path& from, const std::filesystem::path& to) {
    return ui_.run_long_work("Keeping the results of the run before", [from, to](work_progress& progress) {
      copy_file_in_pieces(from, to, [&progress](int percent) {
        progress.percent_done(percent);
        return !progress.is_cancelled();
      });
    });
  };
  try {
    previous_.hold(std::filesystem::absolute(name).replace_extension(), copy);
  } catch (const std::exception& error) {
    ui_.add_info_line(std::string("The results of the run before will not be kept. ") + error.what(), icon_note);
  }
}

bool run_control::prepare_many_runs() {
  if (!load_engine()) return false;
  std::vector<std::filesystem::path> files{library_->path, documents_.file_name};
  for (const recorded_query& query : executed_) files.emplace_back(query.source.file);
  recorder_.know(files);
  return true;
}

// A run that failed and wrote nothing leaves the older results, and so their record.
void run_control::write_record_beside_results(const run_record& record) {
  if (recorder_.base().empty() || (record.end.status != 0 && record.outputs.empty())) return;
  try {
    write_record(record_file_of(base_of_record(recorder_.base(), record)), to_json(record));
  } catch (const std::exception& error) {
    ui_.add_info_line(error.what(), icon_note);
  }
}

void run_control::cancel_job() {
  if (!active_thread) return;
  ui_.add_info_line("Terminating model thread... please wait...", icon_plain);
  if (active_thread->priority_position == stopped_position)
    ui_.add_info_line("The model is stopped. It ends when you raise its priority from \"Stop\".", icon_note);
  active_thread->Terminate();
}

void run_control::clear_progress() {
  ui_.set_progress(0);
  ui_.set_info_label("");
  ui_.set_time_remaining_label("");
}

bool run_control::change_priority(int position) {
  if (!active_thread || !priorities) return false;
  if (!vesk::change_priority(position, active_thread->priority_position, *priorities)) return false;
  priority_word = priority_words[position];
  return true;
}

// A drag, a held key and a held mouse button are many changes. Refusals within a second of each other give only one
// line.
void run_control::move_priority_track_bar(int position) {
  if (!active_thread || change_priority(position)) return;
  ui_.set_priority_position(active_thread->priority_position);
  const auto now = std::chrono::steady_clock::now();
  if (now - std::exchange(priority_refused_, now) < std::chrono::seconds(1)) return;
  ui_.add_info_line("Could not change model priority", icon_failure);
}

void run_control::show_news() {
  if (!active_thread) return;
  const winvesk_thread::mailbox news = active_thread->take_mailbox();
  if (news.progress_changed) {
    ui_.set_progress(news.progress_percent);
    const auto elapsed = static_cast<int>(std::time(nullptr) - active_thread->start_time());
    ui_.set_time_remaining_label(time_remaining_text(elapsed, news.progress_percent));
  }
  simulation_time_ = news.simulation_time;
  if (news.simulation_time_changed) ui_.set_info_label(news.simulation_time_text);
  if (news.grid_changed) {
    ui_.show_results_grid(true);
    ui_.repaint_results_grid();
  }
}

void run_control::add_info_line(const std::string& text, int icon) {
  if (icon == icon_failure && last_job_.engine_failure.empty()) last_job_.engine_failure = text;
  if (icon == icon_note && last_job_.warnings.size() < job_outcome::most_warnings) last_job_.warnings.push_back(text);
  ui_.add_info_line(text, icon);
  ui_.select_last_info_line();
}

void run_control::set_file_name(const std::string& name) {
  if (job_start_ && !job_start_->file_name && job_start_->document == documents_.document_number())
    job_start_->file_name = documents_.file_name; // Undo restores it together with the data set
  documents_.file_name = name;
  form_.update_caption();
}

// The job that put the name is still running, so the launcher will only show its busy box.
void run_control::hydrodynamic_file_put() {
  launch(job_code::read_hyd_file);
  ui_.hydrodynamic_file_named();
}

void run_control::initialize_grid(const std::vector<std::string>& column_labels, int rows) {
  grid_.initialize(rows);
  ui_.initialize_grid(column_labels, rows);
}

void run_control::clear_grid_data() {
  grid_.clear_data();
  ui_.repaint_results_grid();
}

} // namespace vesk
