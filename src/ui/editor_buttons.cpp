#include "ui/editor_buttons.h"

#include "ui/texts.h"
#include "ui/wrapping_row.h"

#include <QPushButton>
#include <algorithm>
#include <utility>

namespace vesk {

namespace {

// The eight buttons, in the order in which they are shown.
struct button_row {
  panel_buttons button;
  const char* text;
  const char* name;
  const char* hint;
  void (*command)(editor&, editor_panel&);
};

constexpr button_row button_table[] = {
    {insert_button, "&Insert", "InsertRowButton", "Insert a row before the active one (Ctrl++)",
     [](editor& form, editor_panel& panel) { form.InsertRowButtonClick(panel); }},
    {delete_button, "&Delete", "DeleteRowButton", "Delete the active row; Ctrl+- deletes all selected rows",
     [](editor& form, editor_panel& panel) { form.DeleteRowButtonClick(panel); }},
    {delete_all_button, "", "DeleteAllButton", "Delete all rows",
     [](editor& form, editor_panel& panel) { form.DeleteAllButtonClick(panel); }},
    {copy_button, "&Copy", "CopyButton", "Copy the selected cells (Ctrl+C)",
     [](editor& form, editor_panel& panel) { form.CopyButtonClick(panel); }},
    {paste_button, "&Paste", "PasteButton", "Paste the clipboard's cells, starting at the active cell (Ctrl+V)",
     [](editor& form, editor_panel& panel) { form.PasteButtonClick(panel); }},
    {fill_calc_button, "&Fill/Calc", "FillCalcButton", "Fill the selected cells from an expression",
     [](editor& form, editor_panel& panel) { form.FillCalcButtonClick(panel); }},
    {graph_button, "&Graph", "GraphButton", "Graph the series in a separate window",
     [](editor& form, editor_panel& panel) { form.GraphButtonClick(panel); }},
    {import_button, "I&mport", "ImportButton", "Fill the series from a table or database",
     [](editor& form, editor_panel& panel) { form.ImportButtonClick(panel); }},
};

} // namespace

editor_buttons::editor_buttons(editor& form, editor_panel& panel, command_runner run)
    : form_(form), panel_(&panel), run_(std::move(run)), row_(new wrapping_row(this)) {
  add_buttons(panel.buttons);
}

editor_buttons::editor_buttons(editor& form, command_runner run)
    : form_(form), panel_(nullptr), run_(std::move(run)), row_(new wrapping_row(this)) {
  add_buttons(series_buttons);
}

void editor_buttons::add_buttons(unsigned wanted) {
  for (const button_row& one : button_table) {
    if (!(wanted & one.button)) continue;
    const QString text = one.button == delete_all_button ? shown(form_.delete_all_text()) : QString(one.text);
    const auto work = [this, &one] {
      editor_panel& panel = panel_of(one.button);
      run_(panel, [this, &one, &panel] { one.command(form_, panel); });
    };
    buttons_.push_back({one.button, one.hint, add(text, one.name, work)});
  }
  show_state();
}

QPushButton* editor_buttons::add(const QString& text, const char* name, const std::function<void()>& work) {
  auto* button = new QPushButton(text);
  button->setObjectName(name);
  connect(button, &QPushButton::clicked, this, work);
  row_->addWidget(button);
  return button;
}

void editor_buttons::add_command(const editor_command& command, editor_panel& panel) {
  auto* button = new QPushButton(shown(command.text));
  button->setObjectName(shown(command.name));
  connect(button, &QPushButton::clicked, this, [this, &panel, work = command.run] { run_(panel, work); });
  row_->addWidget(button);
}

// Import fills the series of the current choice, wherever the cursor is.
editor_panel& editor_buttons::panel_of(panel_buttons button) const {
  if (panel_) return *panel_;
  const auto panels = form_.panels();
  if (button == import_button)
    for (const auto& panel : panels)
      if (panel->buttons & import_button) return *panel;
  return *panels[form_.active_grid().value_or(0)];
}

void editor_buttons::show_state() {
  for (const shown_button& one : buttons_) {
    const std::string reason = form_.reason_against(one.button, panel_of(one.button));
    one.control->setEnabled(reason.empty());
    one.control->setToolTip(reason.empty() ? QString(one.hint) : tool_tip(shown(reason)));
  }
}

} // namespace vesk
