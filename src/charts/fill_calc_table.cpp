#include "charts/fill_calc_table.h"

#include "charts/fill_calc_change.h"
#include "platform/counted.h"

#include <algorithm>

namespace vesk {

namespace {

double number(const cell_value& value) {
  const double* stored = std::get_if<double>(&value);
  return stored ? *stored : 0;
}

} // namespace

// Display.

void TFillCalcTable::show(grid& content) {
  content_ = &content;
  refused_.reset();
  if (view_) view_->columns_changed();
  display_rows();
}

void TFillCalcTable::display_rows(bool repaint) {
  if (content_->row_count() == 0)
    display_as_empty();
  else
    display_as_non_empty();
  rows_changed(repaint);
}

void TFillCalcTable::display_as_empty() {
  shown_as_empty_ = true;
  rows_changed(false);
}

void TFillCalcTable::display_as_non_empty() {
  shown_as_empty_ = false;
}

void TFillCalcTable::invalidate_row(std::size_t row) {
  if (view_ && row < content_->row_count()) view_->cells_changed({row, 0, row, content_->columns().size() - 1});
}

void TFillCalcTable::rows_changed(bool) {
  if (refused_ && (is_shown_as_empty() || refused_->row >= row_limit())) refused_.reset();
  const std::size_t last_row = std::max<std::size_t>(row_limit(), 1) - 1;
  const std::size_t last_column = std::max<std::size_t>(content_->columns().size(), 1) - 1;
  active_row_ = std::min(active_row_, last_row);
  active_column_ = std::min(active_column_, last_column);
  if (selection_ && (selection_->bottom > last_row || selection_->right > last_column)) selection_.reset();
  if (view_) view_->rows_changed();
}

void TFillCalcTable::set_active(std::size_t row, std::size_t column) {
  row = std::min(row, std::max<std::size_t>(row_limit(), 1) - 1);
  column = std::min(column, std::max<std::size_t>(content_->columns().size(), 1) - 1);
  const bool enters_row = row != active_row_;
  if (!enters_row && column == active_column_) return;
  active_row_ = row;
  active_column_ = column;
  if (view_) view_->active_cell_changed();
  if (enters_row && OnEnteringRow) OnEnteringRow(row);
}

cell_range TFillCalcTable::selection() const {
  return selection_.value_or(cell_range{active_row_, active_column_, active_row_, active_column_});
}

bool TFillCalcTable::all_rows_selected() const {
  return selection_ && !shown_as_empty_ && selection_->top == 0 && selection_->bottom + 1 == row_limit();
}

// One cell.

std::string TFillCalcTable::text(std::size_t row, std::size_t column) const {
  if (refused_ && refused_->row == row && refused_->column == column) return refused_->text;
  if (shown_as_empty_ || row >= content_->row_count()) return {};
  return cell_text(content_->columns()[column].type, content_->value(row, column));
}

std::string TFillCalcTable::entry_text(std::size_t row, std::size_t column) const {
  if (refused_ && refused_->row == row && refused_->column == column) return refused_->text;
  if (shown_as_empty_ || row >= content_->row_count()) return {};
  return vesk::entry_text(content_->columns()[column].type, content_->value(row, column));
}

std::string TFillCalcTable::tool_tip(std::size_t row, std::size_t column) const {
  if (refused_ && refused_->row == row && refused_->column == column) return "Not accepted: " + refused_->reason + ".";
  if (shown_as_empty_ || row >= content_->row_count()) return {};
  std::string tip = content_->mark(row, column).text;
  const auto add = [&tip](const std::string& line) {
    if (!tip.empty() && !line.empty()) tip += '\n';
    tip += line;
  };
  add(content_->tool_tip(row, column));
  const cell_type& type = content_->columns()[column].type;
  const cell_value value = content_->value(row, column);
  if (type.kind == cell_kind::number && std::holds_alternative<double>(value)) {
    const cell_entry shown = read_entry(number_cell({}), cell_text(type, value));
    if (!shown.accepted() || shown.value != value) add("Exactly " + vesk::entry_text(type, value));
  }
  return tip;
}

bool TFillCalcTable::is_editable(std::size_t row, std::size_t column) const {
  return !shown_as_empty_ && row < content_->row_count() && content_->columns()[column].editable &&
         !std::holds_alternative<std::monostate>(content_->value(row, column));
}

bool TFillCalcTable::enter(std::size_t row, std::size_t column, std::string_view typed, bool chosen) {
  if (!is_editable(row, column)) return true;
  if (refused_ && (refused_->row != row || refused_->column != column)) return false;
  const bool was_refused = refused_.has_value();
  if (!was_refused && !allows_edit()) return false;
  refused_.reset();
  const cell_type& type = content_->columns()[column].type;
  const cell_value present = content_->value(row, column);
  const bool replaces_stand_in =
      chosen && type.kind == cell_kind::combo && number(present) >= static_cast<double>(type.items->size());
  cell_entry entry;
  if (typed == cell_text(type, present) && !replaces_stand_in)
    entry.value = present;
  else
    entry = read_entry(type, typed);
  if (!entry.accepted()) {
    refused_ = {row, column, std::string(typed), std::move(entry.refusal)};
    if (view_) view_->entry_refused();
    return false;
  }
  if (was_refused && view_) view_->entry_refused();
  if (entry.value == present) return true;
  change one(*this, "Edit");
  content_->set_value(row, column, entry.value);
  const std::size_t place = content_->sort(row);
  if (place == row) {
    cell_range changed{row, 0, row, content_->columns().size() - 1};
    if (content_->has_free_rows()) changed.top = 0, changed.bottom = content_->row_count() - 1; // others may have moved
    if (view_) view_->cells_changed(changed);
  } else {
    if (view_) view_->rows_changed();
    if (row == active_row_) set_active(place, active_column_);
  }
  if (OnDoneEdit) OnDoneEdit(column);
  one.complete();
  return true;
}

void TFillCalcTable::click(std::size_t row, std::size_t column) {
  if (!is_editable(row, column) || !allows_edit() || refused_) return;
  if (content_->columns()[column].typed_only) {
    if (OnClick) OnClick(row, column);
    return;
  }
  enter(row, column, number(content_->value(row, column)) != 0 ? "0" : "1");
}

void TFillCalcTable::give_up_refused() {
  if (!refused_) return;
  refused_.reset();
  if (view_) view_->entry_refused();
}

bool TFillCalcTable::has_default() const {
  return is_editable(active_row_, active_column_) && content_->default_value(active_row_, active_column_);
}

void TFillCalcTable::back_to_default() {
  if (!has_default()) return;
  change one(*this, "Back to the default");
  refused_.reset();
  content_->set_value(active_row_, active_column_, *content_->default_value(active_row_, active_column_));
  if (view_) view_->cells_changed({active_row_, active_column_, active_row_, active_column_});
  one.complete();
}

// Rows.

void TFillCalcTable::insert_row_at_active() {
  if (!content_->has_free_rows()) return;
  change one(*this, "Insert row");
  content_->insert_row(std::min(active_row_, content_->row_count()));
  display_rows(false);
  if (OnRowsChanged) OnRowsChanged();
  one.complete();
}

void TFillCalcTable::delete_active_row() {
  if (!content_->has_free_rows() || active_row_ >= content_->row_count()) return;
  change one(*this, "Delete row");
  content_->erase_rows(active_row_, 1);
  display_rows(false);
  if (OnRowsChanged) OnRowsChanged();
  one.complete();
}

void TFillCalcTable::delete_selected_rows() {
  const cell_range block = selection();
  if (!content_->has_free_rows() || block.top >= content_->row_count()) return;
  const std::size_t count = std::min(block.bottom + 1, content_->row_count()) - block.top;
  set_active(block.top, active_column_); // before the rows go, so that tables with the same active row go there too
  change one(*this, "Delete " + counted(count, "row"));
  content_->erase_rows(block.top, count);
  selection_.reset();
  display_rows(false);
  if (OnRowsChanged) OnRowsChanged();
  one.complete();
}

void TFillCalcTable::delete_all_rows() {
  if (!content_->has_free_rows() || content_->row_count() == 0) return;
  change one(*this, "Delete all rows");
  content_->erase_rows(0, content_->row_count());
  display_rows();
  if (OnRowsChanged) OnRowsChanged();
  one.complete();
}

bool TFillCalcTable::extend_on_down(move_command command) {
  if (command != move_command::down || !content_->has_free_rows() || shown_as_empty_ || refused_) return false;
  const std::size_t rows = content_->row_count();
  if (rows == 0 || active_row_ + 1 != rows || !allows_edit()) return false;
  change one(*this, "Append row");
  content_->resize(rows + 1);
  display_rows();
  set_active(rows, active_column_);
  if (OnRowsChanged) OnRowsChanged();
  one.complete();
  return true;
}

void TFillCalcTable::sort_rows() {
  if (shown_as_empty_ || content_->row_count() == 0) return;
  change one(*this, "Sort by date and time");
  const std::size_t place = content_->sort(active_row_);
  if (view_) view_->rows_changed();
  set_active(place, active_column_);
  one.complete();
}

// Marks.

bool TFillCalcTable::go_to_next_mark(bool from_start) {
  const std::size_t rows = shown_as_empty_ ? 0 : content_->row_count(), columns = content_->columns().size();
  const std::size_t first = from_start ? 0 : active_row_ * columns + active_column_ + 1;
  for (std::size_t cell = first; cell < rows * columns; ++cell) {
    if (!content_->mark(cell / columns, cell % columns)) continue;
    selection_.reset();
    set_active(cell / columns, cell % columns);
    return true;
  }
  return false;
}

} // namespace vesk
