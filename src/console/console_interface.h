// The user interface of vesk-run: lines on the two standard streams and a progress bar.
#pragma once

#include "app/user_interface.h"
#include "console/options.h"

#include <cstdio>

namespace vesk {

class console_interface final : public user_interface {
public:
  struct settings {
    progress_style progress = progress_style::automatic; // automatic: a bar on a terminal, plain lines elsewhere
    bool quiet = false;                                  // only failures
    bool yes = false;                                    // Yes or OK to every question
  };

  // Info lines go to `out`, failures, boxes and progress to `err`.
  console_interface(settings s, std::FILE* out, std::FILE* err);

  // The subject of the following messages: put before the text of a box that does not contain it.
  void set_subject(const std::string& subject) override { subject_ = subject; }
  void set_row(const std::string& row) { row_ = row; } // "row 3", named in each failure; empty: none

  // Prints one line about a failure.
  void say_failure(const std::string& text);
  void say(const std::string& text); // one line; nothing if quiet

  // Writes to `out` unchanged.
  void write(const std::string& text);
  // True once writing to `out` has failed, as on a full disk. The failure was reported. For the exit status.
  bool lost_output() const { return lost_output_; }

  // The bar is shown during a job; `good`: the job did all its work.
  void begin_progress();
  void end_progress(bool good);

  box_answer message_box(const std::string& title, const std::string& text, box_buttons buttons) override;
  bool boxes_stay_in_sight() const override { return true; }
  std::optional<std::string> ask_file(const file_dialog&) override { return {}; }
  std::optional<std::string> ask_folder(const std::string&, const std::string&) override { return {}; }
  bool run_long_work(const std::string& what, const std::function<void(work_progress&)>& work) override;
  void set_busy(bool) override {}
  bool show_form(form&) override { return false; }
  void set_caption(const std::string&) override {}
  void set_commands(const command_conditions&) override {}
  void close_main_window() override {}
  void add_info_line(const std::string& text, int icon) override;
  void clear_info_lines() override {} // printed lines cannot be cleared
  void set_progress(int percent) override;
  void set_info_label(const std::string& text) override { info_label_ = text; }
  void set_time_remaining_label(const std::string& text) override { time_remaining_ = text; }
  void query_executed(const std::string& series, const import_query_descriptor& query,
                      const query_report& report) override;
  bool may_go_on_without_rows(int series) override;
  void hydrodynamic_file_named() override { say_failure("The file name is stored; --read-hyd reads it."); }
  int queries_executed() const { return queries_executed_; } // so far
  void show_run_controls(bool) override {}
  void initialize_grid(const std::vector<std::string>&, int) override {}
  void show_results_grid(bool) override {}
  void repaint_results_grid() override {}

  // Redraws the bar after the labels have changed.
  void refresh_progress();

private:
  void print(std::FILE* stream, const std::string& text);
  void wipe_bar();

  settings settings_;
  std::FILE* out_;
  std::FILE* err_;
  std::string subject_, row_;
  bool progress_runs_ = false;
  bool bar_is_drawn_ = false;
  bool lost_output_ = false;
  int queries_executed_ = 0;
  int percent_ = 0;
  int highest_ = 0;
  int last_tenth_ = 0;
  std::string info_label_, time_remaining_;
};

} // namespace vesk
