// Test double of the user interface: records every call and returns preset answers.
#pragma once

#include "app/user_interface.h"
#include "editors/form.h"
#include "editors/long_work.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vesk {

class noting_interface : public user_interface {
public:
  std::vector<std::string> boxes;    // "title: text"
  std::vector<std::string> lines;    // "icon text"
  std::vector<std::string> headings; // of jobs
  std::vector<std::string> shown;    // progress, labels, run controls, grid
  std::vector<std::string> series;   // whose queries were executed
  std::vector<std::string> results;  // files shown as results
  std::string caption;
  command_conditions commands;
  bool closed = false;
  box_answer answer = box_answer::ok;
  std::optional<std::string> file;   // the answer to the next file dialogs
  std::optional<std::string> folder; // the answer to the next folder dialogs
  std::string asked_file;            // title and folder of the last file dialog
  std::string asked_from;            // where the last folder dialog began
  std::vector<std::string> forms;    // captions
  std::function<void()> in_form;     // called while a form is shown
  bool form_result = true;
  bool closes_forms = false;          // asks the form before OK, as a window does
  std::function<void()> in_long_work; // what happens during it
  bool cancels_long_work = false;     // at once
  window_geometry window{100, 10, 20, 800, 600, window_geometry::window_normal};
  std::vector<std::string> steps; // of the window's start
  std::vector<std::string> documents;
  int priority_position = -1;

  box_answer message_box(const std::string& title, const std::string& text, box_buttons) override {
    boxes.push_back(title + ": " + text);
    return answer;
  }
  std::optional<std::string> ask_file(const file_dialog& dialog) override {
    asked_file = dialog.title + " in " + dialog.folder;
    return file;
  }
  std::optional<std::string> ask_folder(const std::string&, const std::string& start) override {
    asked_from = start;
    return folder;
  }
  bool show_results(const std::string& name, bool after_run) override {
    results.push_back(name + (after_run ? " after a run" : ""));
    return true;
  }
  bool show_form(form& wanted) override {
    forms.push_back(wanted.caption());
    wanted.FormShow();
    if (in_form) in_form();
    return form_result && (!closes_forms || wanted.FormCloseQuery(true));
  }
  bool run_long_work(const std::string& what, const std::function<void(work_progress&)>& work) override {
    if (in_long_work) in_long_work();
    if (!cancels_long_work) return user_interface::run_long_work(what, work);
    struct : unseen_progress {
      bool is_cancelled() const override { return true; }
    } cancelled;
    work(cancelled);
    return false;
  }
  void set_busy(bool) override {}
  void set_caption(const std::string& text) override { caption = text; }
  void set_commands(const command_conditions& conditions) override { commands = conditions; }
  void close_main_window() override { closed = true; }
  void add_info_line(const std::string& text, int icon) override { lines.push_back(std::to_string(icon) + " " + text); }
  void clear_info_lines() override { lines.clear(); }
  void begin_job_messages(const std::string& heading) override { headings.push_back(heading); }
  void end_job_messages(const std::string& outcome) override { headings.back() += ": " + outcome; }
  void set_progress(int percent) override { shown.push_back("progress " + std::to_string(percent)); }
  void set_info_label(const std::string& text) override { shown.push_back("info " + text); }
  void set_time_remaining_label(const std::string& text) override { shown.push_back("time" + text); }
  void query_executed(const std::string& name, const import_query_descriptor&, const query_report&) override {
    series.push_back(name);
  }
  void show_run_controls(bool running) override { shown.push_back(running ? "run on" : "run off"); }
  void initialize_grid(const std::vector<std::string>& labels, int rows) override {
    shown.push_back("grid " + std::to_string(labels.size()) + "x" + std::to_string(rows));
  }
  void show_results_grid(bool visible) override { shown.push_back(visible ? "grid on" : "grid off"); }
  void repaint_results_grid() override { shown.push_back("repaint"); }

  window_geometry geometry() override { return window; }
  void set_geometry(const window_geometry& geometry) override { window = geometry; }
  void minimise_main_window() override { steps.push_back("minimised"); }
  void hide_splash() override { steps.push_back("splash hidden"); }
  void show_administration_menu(bool visible) override { steps.push_back(visible ? "administration" : "no one"); }
  void add_documentation_item(const std::string& text) override { documents.push_back(text); }
  void set_priority_position(int position) override { priority_position = position; }

  // The boxes shown since the last call.
  std::vector<std::string> take_boxes() { return std::exchange(boxes, {}); }
};

} // namespace vesk
