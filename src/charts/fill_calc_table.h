// TFillCalcTable: a grid whose selected block can be copied, pasted over, filled from an expression and charted.
//
// The table's logic without a widget. A view shows `content()` and forwards the user's actions to the table. Main
// thread only. Every operation that changes cells runs between OnBeginChange and OnEndChange; if it throws in between,
// the owner can undo all its changes.
#pragma once

#include "charts/general_graph_data.h"
#include "charts/grid.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// The display of a table. All members are called on the main thread, after the change.
class table_view {
public:
  virtual ~table_view() = default;
  virtual void columns_changed() {}                // rows_changed follows
  virtual void rows_changed() {}                   // count, order or all values
  virtual void cells_changed(const cell_range&) {} // values
  virtual void active_cell_changed() {}
  virtual void entry_refused() {} // or given up; see TFillCalcTable::refused
};

enum class move_command { none, up, down, left, right };

class TFillCalcTable {
public:
  explicit TFillCalcTable(grid& content) : content_(&content) {}
  TFillCalcTable(const TFillCalcTable&) = delete;
  TFillCalcTable& operator=(const TFillCalcTable&) = delete;

  // The events of the grid control, for the dialog that owns the table. All may be empty.
  std::function<void(const std::string& label)> OnBeginChange; // an operation with this name starts
  std::function<void(bool completed)> OnEndChange;             // it has ended; false: by an exception
  // Before an entry, a click or a row that Down appends; false: not allowed now.
  std::function<bool()> OnAllowEdit;
  std::function<void(std::size_t column)> OnDoneEdit; // one entry was written; the rows are sorted again
  std::function<void()> OnRowsChanged;                // rows were inserted, erased or appended
  std::function<void(std::size_t row)> OnEnteringRow;
  std::function<void(std::size_t row, std::size_t column)> OnClick; // a click on a typed_only check box

  // The content. Call `show` also after a change of the columns or of the grid's records. Position and selection are
  // clamped.
  const grid& content() const { return *content_; }
  void show(grid& content);
  void set_view(table_view* view) { view_ = view; }

  // Shows the current rows of the grid; an empty grid shows one blank row that accepts no input.
  void display_rows(bool repaint = true);
  void display_as_empty();
  void display_as_non_empty();
  void invalidate_row(std::size_t row); // repaints it after a change of the data behind its cells or marks
  bool is_shown_as_empty() const { return shown_as_empty_; }
  std::size_t row_limit() const { return shown_as_empty_ ? 1 : content_->row_count(); } // rows shown

  // The active cell and the selected block. Without a selection the active cell is the selection.
  std::size_t active_row() const { return active_row_; }
  std::size_t active_column() const { return active_column_; }
  void set_active(std::size_t row, std::size_t column); // clamped; raises OnEnteringRow when the row changes
  void set_selection(std::optional<cell_range> range) { selection_ = range; }
  cell_range selection() const; // within the existing rows and columns
  bool all_rows_selected() const;

  // One cell.
  std::string text(std::size_t row, std::size_t column) const;       // as shown; a refused entry as typed
  std::string entry_text(std::size_t row, std::size_t column) const; // the initial text of an editor
  std::string tool_tip(std::size_t row, std::size_t column) const;
  bool is_editable(std::size_t row, std::size_t column) const;
  bool allows_edit() const { return !OnAllowEdit || OnAllowEdit(); }
  // Accepts a typed text. False: refused, and kept in `refused` until it is corrected or given up. A text equal to the
  // one shown writes nothing; while the entry of another cell is refused, nothing is accepted. `chosen`: selected from
  // a combo's list; the item is then written even if it was only shown in place of a missing one.
  bool enter(std::size_t row, std::size_t column, std::string_view text, bool chosen = false);
  void click(std::size_t row, std::size_t column); // on a check box

  struct refused_entry {
    std::size_t row, column;
    std::string text, reason;
  };
  const std::optional<refused_entry>& refused() const { return refused_; }
  void give_up_refused();
  bool has_default() const; // the active cell
  void back_to_default();

  // Rows. Each does nothing in a grid with fixed rows.
  void insert_row_at_active();
  void delete_active_row();
  void delete_selected_rows();
  void delete_all_rows();
  bool extend_on_down(move_command command); // appends a row if "down" is pressed on the last one; true if it did
  void sort_rows();

  // Blocks. `do_copy` gives exact values, separated by tabs, with a line end after each row.
  std::string do_copy(bool with_headers = false) const;

  // Pastes the clipboard's text, starting at the first cell of the selection, completely or not at all. If rows are
  // free the grid gets as many as are needed; if all rows are selected the pasted lines replace them.
  struct paste_outcome {
    std::string refusal; // a sentence; empty: pasted
    std::size_t first_row = 0, rows = 0;

    static paste_outcome refused(std::string sentence) { return {std::move(sentence), 0, 0}; }
  };
  paste_outcome do_paste(std::string_view text);

  // Fills the selected cells from an expression (see expression.h). Returns a sentence that says why nothing was
  // written; empty on success. If only text cells are selected they get the text itself.
  std::string calculate_selection(std::string_view expression);
  static constexpr const char* nothing_to_fill = "This table has no rows to fill.";

  // The rows as a series, with times as days since 1970; null if there are none. Columns count from 1, because the row
  // header is column 0.
  std::unique_ptr<general_graph_data> generate_moment_value_graph_data(int date_column, int time_column,
                                                                       int value_column) const;

  // Moves to the next marked cell after the active one, or to the first of all, row by row. False: no cell is marked.
  bool go_to_next_mark(bool from_start = false);

private:
  class change;

  void rows_changed(bool repaint);
  bool takes_blocks(std::size_t column) const;

  grid* content_;
  table_view* view_ = nullptr;
  bool shown_as_empty_ = false;
  std::size_t active_row_ = 0, active_column_ = 0;
  std::optional<cell_range> selection_;
  std::optional<refused_entry> refused_;
};

} // namespace vesk
