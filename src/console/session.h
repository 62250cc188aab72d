// One execution of vesk-run: its tasks in order, and the exit status.
#pragma once

#include "app/main_form.h"
#include "console/console_interface.h"
#include "console/options.h"

#include <functional>

namespace vesk {

// The exit statuses of vesk-run. Any other value is the engine's return code.
enum : int { exit_good = 0, exit_failure = 1, exit_usage = 2, exit_cancelled = 130, exit_unfit_return_code = 125 };

class session {
public:
  session(const console_options& options, console_interface& ui);

  // Does all the work and returns the exit status. Main thread.
  int run();

private:
  // The outcome of a step of the work, the most serious last. run_failed: in a run, the engine set a return code other
  // than 0, which becomes the exit status. In any other job such a code counts as a failure.
  enum class step { done, run_failed, cancelled, failed };

  void set_up();
  void try_log();
  void tell_log_loss(const std::string& cause); // once
  bool catalogue_is_there();
  step open_files();
  step jobs();
  step job(const std::string& subject, const std::function<void()>& launch);
  step with_data(const char* what, const std::string& subject, const std::function<void()>& launch);
  step run_model();
  bool has_data(const char* what); // reports if there is none
  step outcome_since(int failures_before) const;
  step refresh();
  step save();
  int status_of(step result) const;

  int run_return_code_ = 0;
  bool log_loss_told_ = false;

  const console_options& options_;
  console_interface& ui_;
  TPreveskMainForm form_;
};

} // namespace vesk
