// The row of an editor's buttons: those of one grid, or one row shared by all its grids, which acts on the active one.
#pragma once

#include "editors/editor.h"

#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

class QPushButton;

namespace vesk {

class wrapping_row;

class editor_buttons final : public QWidget {
public:
  // Executes a command for a panel, after committing the open entry and focusing the panel's grid.
  using command_runner = std::function<void(editor_panel&, const std::function<void()>&)>;

  editor_buttons(editor& form, editor_panel& panel, command_runner run);
  editor_buttons(editor& form, command_runner run); // for the active panel

  void add_command(const editor_command& command, editor_panel& panel);
  void show_state(); // of the active panel, which may have changed or gained or lost rows

private:
  struct shown_button {
    panel_buttons button;
    const char* hint;
    QPushButton* control;
  };

  void add_buttons(unsigned wanted);
  QPushButton* add(const QString& text, const char* name, const std::function<void()>& work);
  editor_panel& panel_of(panel_buttons button) const;

  editor& form_;
  editor_panel* const panel_; // null: the active one
  command_runner run_;
  wrapping_row* row_;
  std::vector<shown_button> buttons_;
};

} // namespace vesk
