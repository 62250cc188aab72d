// The base of the dialogs that edit the data set through grids: panels, their buttons, the check on OK.
//
// An editor edits the current data set in place, from the first keystroke. The main form takes a snapshot first, and
// restores it unless the editor closes with OK. An operation that changes cells is one step of the history. While an
// entry is refused, every command except Cancel only returns to it.
#pragma once

#include "charts/fill_calc_table.h"
#include "editors/editor_host.h"
#include "editors/entry_field.h"
#include "editors/form.h"
#include "editors/history_step.h"
#include "editors/regular_times_form.h"
#include "editors/series_grid.h"
#include "editors/source_ages.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vesk {

enum panel_buttons : unsigned {
  insert_button = 1,
  delete_button = 2,
  delete_all_button = 4,
  copy_button = 8,
  paste_button = 16,
  fill_calc_button = 32,
  graph_button = 64,
  import_button = 128,
  block_buttons = copy_button | paste_button | fill_calc_button,
  series_buttons = 255,
  row_keys = 256, // insert and delete rows from the grid's menu and by key, although the buttons are elsewhere
};

// One grid of an editor with its label, buttons and status line.
struct editor_panel {
  editor_panel(std::string table_name, grid& content, unsigned shown_buttons, series_grid* shown_series)
      : name(std::move(table_name)), label_name(name + "Label"), table(content), buttons(shown_buttons),
        series(shown_series) {}

  const std::string name; // of the grid's control: "TheFillCalcTable"
  std::string label_name; // of the label's control
  TFillCalcTable table;
  const unsigned buttons;
  series_grid* const series; // null: not a series
  std::string label;         // above the grid
  std::string empty_hint;    // replaces the status when the grid is empty
};

// A combo box above the first grid that selects its content.
struct editor_choice {
  std::string name, label; // of the control; the label beside it, with its mnemonic
  std::vector<std::string> items;
  std::size_t position = 0;
  bool is_visible = true;
};

// A button next to the eight.
struct editor_command {
  std::string text, name; // with its mnemonic; of the control
  std::function<void()> run;
  std::string hint = {};
};

// Panels on the same page.
struct editor_page {
  std::string caption;
  std::size_t first, count; // of the panels
};

// A tree of two levels below its root: groups and their items, both counted from 0.
class editor_tree {
public:
  struct node { // without a group: the root; without an item: the group
    std::optional<std::size_t> group, item;
    friend bool operator==(const node&, const node&) = default;
  };
  struct menu_item {
    std::string text, name; // with its mnemonic; of the action
    bool enabled;
    std::function<void()> run;
    std::string key = {}; // shortcut while the tree has the focus: "Del"; empty: none
  };
  virtual ~editor_tree() = default;

  virtual std::string_view name() const = 0; // of the control
  virtual std::string_view root() const = 0;
  virtual std::size_t group_count() const = 0;
  virtual std::string group_text(std::size_t group) const = 0;
  virtual std::size_t item_count(std::size_t group) const = 0;
  virtual std::string item_text(std::size_t group, std::size_t item) const = 0;
  virtual std::string item_tip(std::size_t, std::size_t) const { return {}; }
  virtual bool item_mark(std::size_t, std::size_t) const { return false; } // worth checking; the tip says why
  virtual int image(const node& which) const = 0; // 0 loads, 2 a system, 3 a segment, 4 boundaries
  virtual const std::optional<node>& selected() const = 0;
  virtual void select(std::optional<node> which) = 0;
  virtual std::vector<menu_item> menu(const node& which) = 0; // the popup; may be empty
};

// The window of an editor. All members are called after the change.
class editor_view {
public:
  virtual ~editor_view() = default;
  virtual void texts_changed() = 0;  // labels, status lines, messages, the choice, colours, undo labels
  virtual void series_changed() = 0; // points of a shown series, or which series: updates the live chart
  virtual void go_to_panel(editor_panel& panel) = 0; // focuses its grid
  virtual void go_to_refused_field(entry_field&) {}
  virtual void tree_changed() {} // its nodes or the selection
};

class editor : public form {
public:
  ~editor() override;

  std::span<const std::unique_ptr<editor_panel>> panels() const { return panels_; }
  void set_view(editor_view* view) { view_ = view; }
  editor_host& host() const { return host_; }

  void FormShow() override;
  bool FormCloseQuery(bool by_ok) override;
  void data_set_replaced() override;

  virtual editor_choice* choice() { return nullptr; }
  virtual void ChoiceChange(std::size_t /*position*/) {}

  virtual std::vector<editor_command> extra_commands() { return {}; } // of the first panel

  virtual std::string_view delete_all_text() const { return "Delete &All"; } // of the button

  // The pages that contain the panels; empty: a single page.
  virtual std::vector<editor_page> pages() const { return {}; }
  // Commands below the pages, for all of them.
  virtual std::vector<editor_command> common_commands() { return {}; }
  // Fields beside the first panel's grid, written back on OK.
  virtual std::vector<entry_field*> fields() { return {}; }
  void field_entered(const entry_field& field); // by the user, accepted or not
  // The tree beside the first panel; null without one.
  virtual editor_tree* tree() { return nullptr; }

  // For editors of segments and of records that refer to them: whether the network window works with this one, and the
  // segment of the active row.
  virtual bool is_about_segments() const { return false; }
  virtual std::optional<std::size_t> segment_in_focus() const { return std::nullopt; }
  // Goes to the next row that refers to the segment, from the active one on, wrapping around, or reports that none
  // does.
  void go_to_segment(std::size_t segment);
  void NetworkButtonClick();

  // If all panels share one row of buttons: the panel it acts on, and the event that a grid received the focus.
  virtual std::optional<std::size_t> active_grid() const { return std::nullopt; }
  virtual void grid_entered(std::size_t /*panel*/) {}

  // The buttons. Row buttons act on series and other grids with free rows.
  void InsertRowButtonClick(editor_panel& panel);
  void DeleteRowButtonClick(editor_panel& panel);
  void DeleteAllButtonClick(editor_panel& panel);
  void CopyButtonClick(editor_panel& panel, bool with_headers = false);
  void PasteButtonClick(editor_panel& panel);
  void FillCalcButtonClick(editor_panel& panel);
  void GraphButtonClick(editor_panel& panel);
  void ImportButtonClick(editor_panel& panel);

  // Why a button does nothing in the panel; empty: it can be used.
  std::string reason_against(panel_buttons button, const editor_panel& panel) const;

  // Other commands of the grid's menu.
  void delete_selected_rows(editor_panel& panel);
  void sort_by_date_and_time(editor_panel& panel);
  void back_to_default(editor_panel& panel);
  void regular_times_click(editor_panel& panel);
  void interpolate_between(editor_panel& panel); // of the selected rows
  void keep_these_points(editor_panel& panel);   // a deferred query is kept but no longer executed
  void export_csv(editor_panel& panel);          // all its rows, to a file chosen by the user
  void refresh_from_source(editor_panel& panel); // executes the series' stored query, as one step
  void go_to_next_mark();
  // Goes to the next name that contains `wanted`: in the tree, else in the focused grid, else in the nearest one before
  // it with names. `focused`: null if no grid has the focus.
  void find_next(editor_panel* focused, const std::string& wanted);
  bool has_names() const; // in the tree or a grid
  void undo();
  void redo();

  // Texts.
  std::string status(const editor_panel& panel) const;        // the line under a grid
  std::string deferred_note(const editor_panel& panel) const; // empty unless the series is filled by a query
  std::string source_note(const editor_panel& panel) const;   // empty unless the query's source is newer
  bool has_source(const editor_panel& panel) const;           // the series has a query to execute
  const std::string& message() const { return message_; }     // about the last command

  // The rows of a series for a chart; null if there is nothing to draw.
  std::unique_ptr<general_graph_data> graph_data(const editor_panel& panel) const;

protected:
  explicit editor(editor_host& host) : host_(host) {}

  // The grid must live as long as the editor. Its events update the history.
  editor_panel& add_panel(std::string table_name, grid& content, unsigned buttons, series_grid* series = nullptr);

  virtual void take_content() = 0;                  // shows the current data set
  virtual std::string find_refusal() { return {}; } // why OK is refused; empty: accepted
  virtual std::string_view refusal_title() const { return "Cannot accept data"; }
  virtual void accepted() {} // called after an accepted OK

  virtual bool select_segment(std::size_t /*segment*/) { return false; } // false: no row refers to it
  void go_to_row(editor_panel& panel, std::size_t row);
  // Selects the next node of the tree, starting after the selected one and wrapping around. False: none found.
  bool select_next_node(const std::function<bool(const editor_tree::node&)>& is_wanted);
  bool may_go_on();                                  // no entry is refused; otherwise returns to it
  bool is_in_history() const { return takes_step_; } // Undo, Redo or a failed step is replacing the data set
  history_step begin_step(const std::string& label); // of the history; not of one table
  void end_step(bool completed);
  void set_message(std::string message);
  static constexpr const char* nothing_to_delete = "There is nothing to delete.";
  std::string source_age(const stored_series& series) const; // of the data set; see source_ages
  void refresh_texts();                                      // after labels were changed
  void refresh_series();
  void refresh_tree();

private:
  // Changes the points of the panel's series in one step.
  void edit_points(editor_panel& panel, const std::string& label, const std::function<void(point_list&)>& change);
  bool nothing_is_refused();                                                               // otherwise returns to it
  void take_step(const std::string& done, std::string label, void (editor_host::*step)()); // Undo or Redo
  editor_panel* named_panel(const editor_panel* focused) const;
  void say(const std::string& title, const std::string& sentence);
  bool find_in_tree(const std::string& wanted);
  bool find_in_grid(editor_panel& panel, const editor_panel* focused, const std::string& wanted);

  editor_host& host_;
  std::vector<std::unique_ptr<editor_panel>> panels_;
  editor_view* view_ = nullptr;
  std::string message_;
  mutable source_ages ages_;     // as of the last showing of the window, or filling of a series
  std::size_t marked_panel_ = 0; // last panel visited by F8
  bool takes_step_ = false;      // the data set is being replaced by Undo, Redo or a failure of this editor
  TRegularTimesForm regular_times_;
};

} // namespace vesk
