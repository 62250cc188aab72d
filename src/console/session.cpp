#include "console/session.h"

#include "app/failure_kinds.h"
#include "app/file_names.h"
#include "console/interrupts.h"
#include "console/value_setting.h"
#include "dataset/text_encoding.h"
#include "platform/file_io.h"
#include "platform/safe_file.h"
#include "platform/side_file.h"
#include "query/query_log.h"
#include "results/results_file.h"
#include "runs/value_list.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace vesk {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds longest_sleep(50); // the longest delay of an interrupt
constexpr milliseconds last_farewell(2000);

void make_writable_folder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!error && !std::filesystem::is_directory(folder, error)) error = std::make_error_code(std::errc::not_a_directory);
  if (error) throw file_open_exception("create folder", folder.native(), error.value());
  if (access(folder.c_str(), W_OK | X_OK) != 0) throw file_open_exception("write to folder", folder.native(), errno);
}

} // namespace

session::session(const console_options& options, console_interface& ui, run_record head, record_taker take_record)
    : row_(head.row ? std::optional(static_cast<std::size_t>(*head.row)) : std::nullopt), options_(options), ui_(ui),
      take_record_(std::move(take_record)), form_(ui, settings_file::default_path(), configuration::access::read_only) {
  form_.record_head = std::move(head);
  form_.take_record = [this](run_record record) { ended_run_ = std::move(record); };
}

int session::run() {
  step result = step::failed;
  try {
    set_up();
    if (catalogue_is_there()) result = open_files();
    if (result == step::done) result = jobs();
  } catch (const std::exception& error) {
    if (form_.active_thread) throw; // it is at work on what would be taken down
    result = fail(error.what(), kind_of_failure(error));
  }
  return end(result);
}

int session::end(step result) {
  // A job that has just ended frees itself on its own thread; the process must not exit before that.
  const auto until = steady_clock::now() + last_farewell;
  while (live_thread_count() > 0 && steady_clock::now() < until) wait_and_synchronize(milliseconds(1));
  const int status = options_.reports()  ? reported_status_of(result)
                     : ui_.lost_output() ? static_cast<int>(exit_failure)
                                         : status_of(result);
  end_record(result, status);
  return status;
}

void session::note_failure(const std::string& text, failure_kind kind) {
  if (!failure_ && form_.failures() == 0) failure_ = {text, kind};
}

session::step session::fail(const std::string& text, failure_kind kind) {
  note_failure(text, kind);
  ui_.say_failure(text);
  return step::failed;
}

// Made at once: what cannot be written there is known before anything is done.
void session::make_output_folder() {
  const std::filesystem::path folder = *options_.output_dir;
  try {
    make_writable_folder(folder);
  } catch (const file_exception& error) {
    note_failure(error.what(), kind_of_writing_failure(error));
    throw;
  }
  form_.output_folder = std::filesystem::absolute(folder);
  set_query_trace_folder(form_.output_folder);
  if (options_.log && !options_.log_directory) form_.log_file_name = form_.output_folder / "LOG.TXT";
}

void session::set_up() {
  form_.keep_no_history();
  if (options_.engine) form_.engine_path = *options_.engine;
  if (options_.catalogue) form_.set_database_folder(*options_.catalogue);
  form_.set_logging_enabled(options_.log);
  form_.skip_deferred_queries = options_.no_queries;
  if (options_.log_directory) form_.log_file_name = std::filesystem::path(*options_.log_directory) / "LOG.TXT";
  if (options_.output_dir) make_output_folder();
  if (options_.log) try_log();
  form_.note_start_of_run = [this](const run_record& record) {
    if (take_record_) take_record_(record_file(), record, false);
  };
}

// Jobs never report a log that cannot be written, but here the user has asked for one.
void session::try_log() {
  if (form_.log_file_name.empty())
    return report_log_loss(
        "The log cannot be written: the account has no home directory. Name a folder with --log=DIR.");
  std::error_code ignored; // the failure to write the file is more specific
  std::filesystem::create_directories(form_.log_file_name.parent_path(), ignored);
  if (const int error = append_to_side_file(form_.log_file_name, ""))
    report_log_loss(file_failure("write", form_.log_file_name.native(), error));
}

void session::report_log_loss(const std::string& cause) {
  if (!std::exchange(log_loss_told_, true)) ui_.say_failure(cause + " Continuing without a log.");
}

bool session::catalogue_is_there() {
  const ends_at_once on_a_signal;
  try {
    form_.catalogue.get();
    return true;
  } catch (const catalogue_exception& error) {
    fail(error.what(), failure_kind::unavailable);
    return false;
  }
}

// If a file cannot be opened, the remaining arguments are still processed, but nothing is done with the opened files.
session::step session::open_files() {
  const auto requests = [this] {
    const ends_at_once on_a_signal;
    return form_.walk_command_line(options_.walk);
  }();
  if (form_.failures() > 0) return step::failed;
  if (form_.files_partly_read() > 0 && !options_.yes) {
    return fail("Nothing was done, because a file was only partly read. Use --yes to continue anyway.",
                failure_kind::data);
  }
  if (!requests.import_requested) return step::done;
  return job(requests.import_name, [&] { form_.import_file(requests.import_name); });
}

// A run or an export leaves the data set unchanged, so later steps are done even if it fails. Any other failure ends
// the work: later steps would use an incomplete data set.
session::step session::jobs() {
  step result = step::done;
  bool ended = false;
  const auto next = [&](bool wanted, bool may_fail, const std::function<step()>& work) {
    if (!wanted || ended) return;
    const step came_of_it = interrupted() ? step::cancelled : work();
    if (came_of_it == step::done) return;
    result = std::max(result, came_of_it);
    ended = !may_fail || came_of_it == step::cancelled;
  };
  next(options_.import_network.has_value(), false, [this] {
    if (!form_.current_data_set) form_.new_data_set();
    return with_data("import a network into", *options_.import_network,
                     [this] { form_.start_import_network(*options_.import_network); });
  });
  next(options_.read_hyd, false, [this] {
    return with_data("read a hydrodynamic file for", form_.file_name, [this] { form_.start_read_hyd_file(); });
  });
  next(options_.load_restart.has_value(), false, [this] {
    return with_data("load a restart file into", *options_.load_restart,
                     [this] { form_.start_load_restart_file(*options_.load_restart); });
  });
  next(!options_.set.empty() || options_.set_from, false, [this] { return set_values(); });
  next(options_.list_paths, false, [this] { return list_paths(); });
  next(options_.check, false, [this] {
    const step came_of_it = with_data("check", form_.file_name, [this] { form_.start_validity_check(); });
    if (came_of_it != step::done || form_.last_job().checked) return came_of_it;
    note_failure("The check found failures.", failure_kind::data);
    return step::failed;
  });
  next(options_.refresh, false, [this] { return refresh(); });
  next(options_.run, true, [this] { return run_model(); });
  next(options_.export_name.has_value(), true, [this] {
    return with_data("export", *options_.export_name, [this] { form_.export_file(*options_.export_name); });
  });
  next(options_.save.has_value(), false, [this] { return save(); });
  return result;
}

bool session::has_data(const char* what) {
  if (form_.current_data_set) return true;
  fail(std::string("Nothing to ") + what + ": no data file was opened or imported.", failure_kind::usage);
  return false;
}

session::step session::with_data(const char* what, const std::string& subject, const std::function<void()>& launch) {
  return has_data(what) ? job(subject, launch) : step::failed;
}

session::step session::run_model() {
  if (!has_data("run")) return step::failed;
  try {
    choose_results();
  } catch (const value_error& error) {
    return fail(error.what(), kind_of_failure(error));
  }
  const step result = job(form_.file_name, [this] { form_.RunModelButtonClick(); });
  run_return_code_ = form_.last_job().return_code;
  return result == step::done && !chosen_.empty() ? cut_results() : result;
}

// The bundled engine learns of them by its environment, while there is one thread.
void session::choose_results() {
  if (!options_.results || !chosen_.empty()) return;
  chosen_ = read_chosen_series(*options_.results, *form_.current_data_set);
  setenv("VESK_RESULTS", text_of(chosen_).c_str(), 1);
}

// What another engine has written stays as it is. A file that the run has not written is of an older one.
session::step session::cut_results() {
  if (form_.engine_is_bundled()) return step::done;
  const std::string base = form_.recorded_base().native(), table = base + ".results.csv";
  std::string text;
  try {
    const auto is_results = [&](const recorded_file& it) { return it.file == base + ".nc"; };
    if (!ended_run_ || std::ranges::none_of(ended_run_->outputs, is_results))
      throw results_exception("it has not written " + base + ".nc.");
    text = table_of_series(base + ".nc", chosen_);
  } catch (const std::exception& error) {
    return fail(std::string("The series of --results cannot be cut out of the engine's results: ") + error.what(),
                failure_kind::data);
  }
  try {
    safe_file file(table);
    write_all(file.descriptor(), text, {}, table);
    file.commit();
  } catch (const file_exception& error) {
    return fail(error.what(), kind_of_writing_failure(error));
  }
  ended_run_->outputs.push_back(describe_file(table, false));
  return step::done;
}

// Starts a job and serves it until it has ended.
session::step session::job(const std::string& subject, const std::function<void()>& launch) {
  const int failures_before = form_.failures();
  ui_.set_subject(subject);
  launch();
  ui_.begin_progress(); // of the job only, not of the work before its start
  auto next_tick = steady_clock::now() + milliseconds(TPreveskMainForm::ui_update_interval);
  bool cancel_told = false;
  while (form_.active_thread) {
    if (interrupted() && !cancel_told) {
      form_.cancel_job();
      if (interrupted_by_keyboard()) ui_.say_failure("Cancelling. Press Ctrl+C twice more to end at once.");
      cancel_told = true;
    }
    wait_and_synchronize(longest_sleep);
    if (steady_clock::now() < next_tick) continue;
    form_.UpdateTimerTimer();
    ui_.refresh_progress();
    next_tick += milliseconds(TPreveskMainForm::ui_update_interval);
  }
  if (!form_.last_job().log_loss.empty()) report_log_loss(form_.last_job().log_loss);
  const step result = outcome_since(failures_before);
  if (result != step::done && failed_job_.return_code == 0 && !failed_job_.failed()) failed_job_ = form_.last_job();
  ui_.end_progress(result == step::done);
  ui_.set_subject("");
  return result;
}

session::step session::outcome_since(int failures_before) const {
  if (form_.failures() > failures_before || form_.last_job().failed()) return step::failed;
  if (form_.last_job().cancelled) return step::cancelled;
  if (form_.last_job().return_code == 0) return step::done;
  return form_.last_job().code == job_code::run ? step::run_failed : step::failed;
}

session::step session::set_values() {
  if (!has_data("set a value in")) return step::failed;
  try {
    std::vector<value_assignment> assignments;
    for (const std::string& text : options_.set) assignments.push_back(parse_assignment(*form_.current_data_set, text));
    if (options_.set_from && !table_) table_ = read_run_table(options_, *form_.current_data_set);
    if (table_)
      for (value_assignment& it : table_->assignments(*form_.current_data_set, *row_))
        assignments.push_back(std::move(it));
    return vesk::set_values(form_, assignments, options_.beyond_limits, before_queries_ ? &*before_queries_ : nullptr)
               ? step::done
               : step::failed;
  } catch (const std::exception& error) {
    return fail(error.what(), kind_of_failure(error));
  }
}

session::step session::list_paths() {
  if (!has_data("list")) return step::failed;
  std::string lines;
  const auto print = [&](const std::string& line) {
    constexpr std::size_t piece = 1 << 16;
    lines += printable_text(std::string_view(line).substr(0, line.size() - 1)) + "\n";
    if (lines.size() > piece) ui_.write(std::exchange(lines, {}));
  };
  (options_.csv ? list_parameters : list_values)(*form_.current_data_set, print);
  ui_.write(lines);
  return step::done;
}

session::step session::refresh() {
  if (!has_data("refresh")) return step::failed;
  ui_.set_subject(form_.file_name);
  const int executed_before = ui_.queries_executed();
  if (!form_.execute_all_deferred_queries()) return step::failed;
  if (interrupted()) return step::cancelled;
  if (ui_.queries_executed() == executed_before) ui_.say("No series has a deferred query.");
  return options_.save ? step::done : save(); // --save saves at its own place in the order
}

// With a name after --save the user agrees to replace that file. The data set's own file may have changed on disk.
session::step session::save() {
  if (!has_data("save")) return step::failed;
  if (!options_.save && split_file_name(form_.file_name).base.empty())
    return fail("The data set has no file name; give one with --save.", failure_kind::usage);
  const int failures_before = form_.failures();
  const bool saved = options_.save ? form_.save_as(*options_.save) : form_.save();
  if (!saved && form_.failures() == failures_before)
    fail("Not saved. Use --yes to replace the file, or --save FILE to save under another name.",
         failure_kind::cannot_create);
  if (!saved) return step::failed;
  ui_.say("Saved " + form_.file_name + ".");
  return step::done;
}

int session::status_of(step result) const {
  if (result == step::failed) return exit_failure;
  if (result == step::cancelled) return exit_cancelled;
  const int code = run_return_code_;
  return code < 0 || code > exit_unfit_return_code ? exit_unfit_return_code : code;
}

} // namespace vesk
