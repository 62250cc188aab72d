#include "console/session.h"

#include "app/file_names.h"
#include "console/interrupts.h"

#include <chrono>
#include <filesystem>

namespace vesk {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds longest_sleep(50); // an interrupt waits at most this long
constexpr milliseconds last_farewell(2000);

} // namespace

session::session(const console_options& options, console_interface& ui) : options_(options), ui_(ui), form_(ui) {}

int session::run() {
  set_up();
  if (!catalogue_is_there()) return exit_failure;
  step result = open_files();
  if (result == step::done) result = jobs();
  // A job that has just ended frees itself on its own thread.
  const auto until = steady_clock::now() + last_farewell;
  while (live_thread_count() > 0 && steady_clock::now() < until) wait_and_synchronize(milliseconds(1));
  return status_of(result);
}

void session::set_up() {
  if (options_.engine) form_.engine_path = *options_.engine;
  if (options_.catalogue) form_.catalogue.set_directory(*options_.catalogue);
  form_.set_logging_enabled(options_.log);
  form_.skip_deferred_queries = options_.no_queries;
  if (options_.log_directory) form_.log_file_name = std::filesystem::path(*options_.log_directory) / "LOG.TXT";
  std::error_code ignored; // logging never fails aloud
  if (options_.log) std::filesystem::create_directories(form_.log_file_name.parent_path(), ignored);
}

bool session::catalogue_is_there() {
  try {
    form_.catalogue.get();
    return true;
  } catch (const catalogue_exception& error) {
    ui_.say_failure(error.what());
    return false;
  }
}

// The walk of the arguments goes on after a file that cannot be opened, but nothing is done with what it opened.
session::step session::open_files() {
  const command_line_requests requests = form_.walk_command_line(options_.walk);
  if (form_.failures() > 0) return step::failed;
  if (interrupted()) return step::cancelled;
  if (!requests.import_requested) return step::done;
  return job(requests.import_name, [&] { form_.import_file(requests.import_name); });
}

session::step session::jobs() {
  step result = step::done;
  const auto next = [&](bool wanted, const auto& work) {
    if (result == step::done && interrupted()) result = step::cancelled;
    if (result == step::done && wanted) result = work();
  };
  next(options_.import_network.has_value(), [this] {
    if (!form_.current_data_set) form_.new_data_set();
    return job(*options_.import_network, [this] { form_.start_import_network(*options_.import_network); });
  });
  next(options_.read_hyd, [this] {
    const step ready = require_data("read a hydrodynamic file for");
    return ready != step::done ? ready : job(form_.file_name, [this] { form_.start_read_hyd_file(); });
  });
  next(options_.load_restart.has_value(), [this] {
    const step ready = require_data("load a restart file into");
    return ready != step::done
               ? ready
               : job(*options_.load_restart, [this] { form_.start_load_restart_file(*options_.load_restart); });
  });
  next(options_.check, [this] { return check(); });
  next(options_.refresh, [this] {
    const step ready = require_data("refresh");
    if (ready != step::done) return ready;
    ui_.set_subject(form_.file_name);
    if (!form_.execute_all_deferred_queries()) return step::failed;
    return options_.save ? step::done : save(); // --save does it at its turn
  });
  next(options_.run, [this] { return run_model(); });
  next(options_.export_name.has_value(), [this] {
    const step ready = require_data("export");
    return ready != step::done ? ready
                               : job(*options_.export_name, [this] { form_.export_file(*options_.export_name); });
  });
  next(options_.save.has_value(), [this] {
    const step ready = require_data("save");
    if (ready != step::done) return ready;
    form_.file_name = *options_.save;
    return save();
  });
  return result;
}

session::step session::require_data(const char* what) {
  if (form_.current_data_set) return step::done;
  ui_.say_failure(std::string("There is nothing to ") + what + ": no data file was opened or imported.");
  return step::failed;
}

// Starts a job and serves it until it has ended.
session::step session::job(const std::string& subject, const std::function<void()>& launch) {
  const int failures_before = form_.failures();
  ui_.set_subject(subject);
  launch();
  ui_.begin_progress(); // of the job, not of what was done before its start
  auto next_tick = steady_clock::now() + milliseconds(TPreveskMainForm::ui_update_interval);
  bool cancel_told = false;
  while (form_.active_thread) {
    wait_and_synchronize(longest_sleep);
    if (form_.active_thread && interrupted() && !cancel_told) {
      form_.cancel_job();
      cancel_told = true;
    }
    if (steady_clock::now() >= next_tick) {
      form_.UpdateTimerTimer();
      ui_.refresh_progress();
      next_tick += milliseconds(TPreveskMainForm::ui_update_interval);
    }
  }
  const step result = form_.last_job().cancelled                                        ? step::cancelled
                      : form_.failures() > failures_before || form_.last_job().failed() ? step::failed
                      : form_.return_code() != 0                                        ? step::engine_failed
                                                                                        : step::done;
  ui_.end_progress(result == step::done);
  ui_.set_subject("");
  return result;
}

session::step session::check() {
  const step ready = require_data("check");
  if (ready != step::done) return ready;
  const step result = job(form_.file_name, [this] { form_.start_validity_check(); });
  return result == step::done && !form_.last_job().checked ? step::failed : result;
}

session::step session::run_model() {
  const step ready = require_data("run");
  return ready != step::done ? ready : job(form_.file_name, [this] { form_.RunModelButtonClick(); });
}

session::step session::save() {
  const int failures_before = form_.failures();
  ui_.set_subject(form_.file_name);
  form_.SaveItemClick();
  if (form_.failures() > failures_before) return step::failed;
  ui_.say("Saved " + form_.file_name + ".");
  return step::done;
}

int session::status_of(step result) const {
  if (result == step::failed) return exit_failure;
  if (result == step::cancelled) return exit_cancelled;
  const int code = form_.return_code();
  return code < 0 || code > exit_unfit_return_code ? exit_unfit_return_code : code;
}

} // namespace vesk
