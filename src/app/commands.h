// The commands of the main window as tables: the handler of each control, when it is enabled, and its position.
#pragma once

#include "app/user_interface.h"

#include <span>
#include <string_view>

namespace vesk {

class TPreveskMainForm;

// When a control is enabled. `unmanaged` controls are never changed: they follow their menu.
enum class command_condition {
  unmanaged,
  always,
  idle,
  idle_and_data,
  has_data,
  has_model,
  can_undo,
  can_redo,
  ready,
  ready_or_running
};

bool is_enabled(command_condition condition, const command_conditions& now);

// The texts of Undo and Redo, which include the step, such as "Open river.vki". Without a step they are disabled, and
// the tool tip says so.
struct step_words {
  std::string caption;  // of the menu item, "&Undo" without a step; "&" in the step is doubled
  std::string tool_tip; // in words
};
step_words undo_words(const command_conditions& now);
step_words redo_words(const command_conditions& now);

// One control: a menu, a menu item or a tool button. Several controls may share a handler.
struct command_row {
  std::string_view name;
  command_condition condition = command_condition::unmanaged;
  void (TPreveskMainForm::*handler)() = nullptr; // null: the control itself does nothing
};

std::span<const command_row> command_table();

// The row of a control. The name must be one of the table's.
const command_row& find_command(std::string_view name);

// One line of a menu, in order. "&" marks the mnemonic; `caption` "-" is a line between groups. A row of depth 0 is a
// menu; the rows of greater depth after it are its items.
struct menu_row {
  int depth;
  std::string_view name; // of the control; empty for a line
  std::string_view caption;
  std::string_view shortcut = {}; // as "Ctrl+O"; empty for none
};

std::span<const menu_row> main_menu(); // PreveskMainMenu, the window's menu once it has been shown
std::span<const menu_row> fenn_menu(); // FennMainMenu, the short one that it is created with

// A button of the tool bar, in order.
struct tool_row {
  std::string_view name; // of the control; empty for a gap
  int image = 0;         // position in the tool bar's images
  std::string_view hint = {};
};

std::span<const tool_row> tool_bar();

// The appearance of the run button and its two menu items, which depends on whether a run is active. Before the first
// run the button has the hint of the tool bar's table.
struct run_face {
  int image;                // of RunModelButton
  std::string_view hint;    // of RunModelButton
  std::string_view execute; // the caption of ExecuteModelItem
  std::string_view fenn;    // the caption of FennRunModelItem
};

const run_face& face_of_run_controls(bool running);

} // namespace vesk
