// A user who notes all that he is told and answers as he was told before.
#pragma once

#include "app/user_interface.h"

#include <string>
#include <vector>

namespace vesk {

class noting_interface : public user_interface {
public:
  std::vector<std::string> boxes; // "title: text"
  std::vector<std::string> lines; // "icon text"
  std::vector<std::string> shown; // progress, labels, run controls, grid
  std::string caption;
  command_conditions commands;
  bool closed = false;
  box_answer answer = box_answer::ok;
  std::optional<std::string> file;   // the answer to the next file dialogs
  std::optional<std::string> folder; // the answer to the next folder dialogs

  box_answer message_box(const std::string& title, const std::string& text, box_buttons) override {
    boxes.push_back(title + ": " + text);
    return answer;
  }
  std::optional<std::string> ask_file(const file_dialog&) override { return file; }
  std::optional<std::string> ask_folder(const std::string&) override { return folder; }
  void set_busy(bool) override {}
  void set_caption(const std::string& text) override { caption = text; }
  void set_commands(const command_conditions& conditions) override { commands = conditions; }
  void close_main_window() override { closed = true; }
  void add_info_line(const std::string& text, int icon) override { lines.push_back(std::to_string(icon) + " " + text); }
  void clear_info_lines() override { lines.clear(); }
  void set_progress(int percent) override { shown.push_back("progress " + std::to_string(percent)); }
  void set_info_label(const std::string& text) override { shown.push_back("info " + text); }
  void set_time_remaining_label(const std::string& text) override { shown.push_back("time" + text); }
  void show_run_controls(bool running) override { shown.push_back(running ? "run on" : "run off"); }
  void set_up_results_grid(const std::vector<std::string>& labels, int rows) override {
    shown.push_back("grid " + std::to_string(labels.size()) + "x" + std::to_string(rows));
  }
  void show_results_grid(bool visible) override { shown.push_back(visible ? "grid on" : "grid off"); }
  void repaint_results_grid() override { shown.push_back("repaint"); }

  // The boxes since the last call.
  std::vector<std::string> take_boxes() { return std::exchange(boxes, {}); }
};

} // namespace vesk
