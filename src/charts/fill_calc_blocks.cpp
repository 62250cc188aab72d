// The operations of a TFillCalcTable on blocks of cells: copy, paste, fill, chart.
#include "charts/expression.h"
#include "charts/fill_calc_change.h"
#include "charts/fill_calc_table.h"
#include "charts/pasted_text.h"
#include "dataset/moment.h"
#include "platform/counted.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <span>

namespace vesk {

namespace {

std::string_view without_blanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

double number(const cell_value& value) {
  const double* stored = std::get_if<double>(&value);
  return stored ? *stored : 0;
}

} // namespace

bool TFillCalcTable::takes_blocks(std::size_t column) const {
  const grid_column& c = content_->columns()[column];
  return c.editable && !c.typed_only;
}

std::string TFillCalcTable::do_copy(bool with_headers) const {
  std::string text;
  if (shown_as_empty_) return text;
  constexpr std::size_t usual_cell = 11; // characters; avoids most reallocations of a large copy
  const cell_range block = selection();
  text.reserve(block.rows() * block.columns() * usual_cell);
  const auto columns = content_->columns();
  const auto end_cell = [&](std::size_t column) { text += column == block.right ? '\n' : '\t'; };
  for (std::size_t column = block.left; with_headers && column <= block.right; ++column) {
    std::string header = columns[column].header;
    std::ranges::replace(header, '\n', ' ');
    text += header;
    end_cell(column);
  }
  for (std::size_t row = block.top; row <= block.bottom && row < content_->row_count(); ++row)
    for (std::size_t column = block.left; column <= block.right; ++column) {
      append_clipboard_text(text, columns[column].type, content_->value(row, column));
      end_cell(column);
    }
  return text;
}

namespace {

// A value and the position of its cell. Numbers and texts are stored separately: a million numbers then take a third of
// the memory.
template <class Value>
struct placed {
  std::uint32_t row, column;
  Value value;
};

// If a field has both a date and a time: the position of the blank or "T" between them.
std::size_t date_and_time_split(std::string_view field) {
  const auto split = static_cast<std::size_t>(std::ranges::find_if(field, [](char c) { return c == ' ' || c == 'T'; }) -
                                              field.begin());
  return field.find(':', split) != std::string_view::npos ? split : std::string_view::npos;
}

// Reads pasted lines into cell values. Ends at the first field that a cell refuses. The grid must not change meanwhile.
class paste_reader final : public coming_rows {
public:
  // `top`, `left`: the first cell. `rows`: of the grid after the paste.
  paste_reader(const grid& content, const pasted_text& lines, std::size_t top, std::size_t left, std::size_t rows)
      : content_(content), columns_(content.columns()), lines_(lines), top_(top), left_(left), rows_(rows) {
    numbers.reserve(lines.line_count() * std::min(lines.field_count(0), columns_.size()));
  }

  std::vector<placed<double>> numbers;
  std::vector<placed<std::string>> texts;
  std::string refusal; // a sentence; empty: everything was read

  void read() {
    for (std::size_t line = 0; line < lines_.line_count(); ++line)
      if (!read_line(line)) return;
  }

  std::size_t row_count() const override { return rows_; }
  std::optional<std::string_view> field(std::size_t row, std::size_t column) const override {
    if (row < top_ || column < left_ || row - top_ >= lines_.line_count()) return std::nullopt;
    if (column - left_ >= lines_.field_count(row - top_)) return std::nullopt;
    return lines_.field(row - top_, column - left_);
  }

private:
  bool read_line(std::size_t line) {
    const std::size_t row = top_ + line;
    std::size_t column = left_;
    for (std::size_t k = 0; k < lines_.field_count(line); ++k, ++column) {
      const std::string_view field = lines_.field(line, k);
      std::string reason;
      if (column >= columns_.size())
        reason = "there is no column for \"" + std::string(field.substr(0, 60)) + "\"";
      else if (holds_date_and_time(field, column))
        reason = take_date_and_time(field, row, column++);
      else if (columns_[column].editable && !columns_[column].typed_only)
        reason = take(field, row, column);
      if (reason.empty()) continue;
      refusal = "Line " + std::to_string(line + 1) + ", column " + std::to_string(k + 1) + ": " + reason +
                ". Nothing was pasted.";
      return false;
    }
    return true;
  }
  std::string take(std::string_view field, std::size_t row, std::size_t column) {
    const cell_type& type = columns_[column].type;
    // There is nothing to choose from: as if read-only.
    if (type.kind == cell_kind::combo && type.items->size() == 0) return {};
    cell_entry entry = read_entry(type, field);
    if (!entry.accepted()) return shows(field, row, column) ? std::string() : std::move(entry.refusal);
    if (stays(field, entry.value, row, column)) return {};
    const auto to_row = static_cast<std::uint32_t>(row), to_column = static_cast<std::uint32_t>(column);
    if (const double* number = std::get_if<double>(&entry.value))
      numbers.push_back({to_row, to_column, *number});
    else if (auto* text = std::get_if<std::string>(&entry.value))
      texts.push_back({to_row, to_column, std::move(*text)});
    return {};
  }
  // Whether the field is what the cell contains or shows. The shown text may be rounded, and a stored text may be
  // longer than an entry can be.
  bool stays(std::string_view field, const cell_value& value, std::size_t row, std::size_t column) const {
    const cell_value present = content_.value(row, column);
    if (present == value) return true;
    if (std::holds_alternative<std::monostate>(present)) return false;
    const cell_type& type = columns_[column].type;
    if (const auto* text = std::get_if<std::string>(&present)) return read_entry(type, *text).value == value;
    return without_blanks(field) == cell_text(type, present);
  }
  // A cell may show a text that it would not accept: "NaN", or the number of a segment that does not exist.
  bool shows(std::string_view field, std::size_t row, std::size_t column) const {
    if (row >= content_.row_count()) return false;
    const cell_type& type = columns_[column].type;
    const cell_value present = content_.value(row, column);
    std::string copied;
    append_clipboard_text(copied, type, present);
    return without_blanks(field) == copied || without_blanks(field) == cell_text(type, present);
  }
  bool holds_date_and_time(std::string_view field, std::size_t column) const {
    return column + 1 < columns_.size() && columns_[column].type.kind == cell_kind::date &&
           columns_[column + 1].type.kind == cell_kind::time &&
           date_and_time_split(without_blanks(field)) != std::string_view::npos;
  }
  std::string take_date_and_time(std::string_view field, std::size_t row, std::size_t column) {
    field = without_blanks(field);
    const std::size_t split = date_and_time_split(field);
    const std::string reason = take(field.substr(0, split), row, column);
    return reason.empty() ? take(field.substr(split + 1), row, column + 1) : reason;
  }

  const grid& content_;
  std::span<const grid_column> columns_;
  const pasted_text& lines_;
  std::size_t top_, left_, rows_;
};

// Announces the future rows to the grid, for the life of this object.
class expectation {
public:
  expectation(grid& content, const coming_rows& rows) : content_(content) { content_.expect(&rows); }
  ~expectation() { content_.expect(nullptr); }
  expectation(const expectation&) = delete;
  expectation& operator=(const expectation&) = delete;

private:
  grid& content_;
};

} // namespace

TFillCalcTable::paste_outcome TFillCalcTable::do_paste(std::string_view text) {
  const pasted_text lines(text);
  if (lines.line_count() == 0) return paste_outcome::refused("The clipboard contains no text.");
  if (shown_as_empty_ && !content_->has_free_rows()) return paste_outcome::refused("There is no cell to paste into.");

  const std::size_t present = content_->row_count();
  const bool replaces_all = all_rows_selected() && content_->has_free_rows();
  const std::size_t top = replaces_all || present == 0 ? 0 : selection().top;
  const std::size_t needed = top + lines.line_count();
  if (needed > present && !content_->has_free_rows())
    return paste_outcome::refused("The clipboard has " + counted(lines.line_count(), "line") + ", but only " +
                                  counted(present - top, "row") + (present - top == 1 ? " is" : " are") +
                                  " left from row " + std::to_string(top + 1) + " on.");
  const std::size_t coming = replaces_all ? needed : std::max(present, needed);
  paste_reader reader(*content_, lines, top, selection().left, coming);
  {
    const expectation coming_rows_are_known(*content_, reader);
    reader.read();
  }
  if (!reader.refusal.empty()) return paste_outcome::refused(reader.refusal);

  change one(*this, "Paste");
  refused_.reset();
  if (content_->has_free_rows()) content_->resize(coming);
  if (replaces_all) { // the pasted rows are the ones that are selected now
    selection_->bottom = coming - 1;
    selection_->right =
        std::max(selection_->right, std::min(selection_->left + lines.field_count(0), content_->columns().size()) - 1);
  }
  for (const auto& cell : reader.numbers) content_->set_value(cell.row, cell.column, cell.value);
  for (const auto& cell : reader.texts) content_->set_value(cell.row, cell.column, cell.value);
  display_rows(false);
  // After the values, since only now is it known which old references remain and point past the end.
  if (content_->has_free_rows() && OnRowsChanged) OnRowsChanged();
  one.complete();
  return {{}, top, lines.line_count()};
}

namespace {

// Replaces the cells of one column by the results of the formula, and keeps in `old` what they had. Ends with a
// sentence at the first result that its cell refuses. Some hundred cells are read, then computed, then written: the
// memory of many records is fetched at the same time, and is in the cache when they are written.
std::string compute_column(grid& content, std::size_t column, const cell_range& block, expression& formula,
                           std::vector<placed<double>>& old) {
  const cell_type& type = content.columns()[column].type;
  std::array<double, 512> present{}, results{};
  for (std::size_t begin = 0; begin < block.rows(); begin += present.size()) {
    const std::size_t count = std::min(present.size(), block.rows() - begin), first = block.top + begin;
    for (std::size_t k = 0; k < count; ++k) present[k] = number(content.value(first + k, column));
    for (std::size_t k = 0; k < count; ++k) {
      const double result = formula.evaluate({.x = expression_number(type, present[k]),
                                              .row = static_cast<double>(first + k + 1),
                                              .i = static_cast<double>(begin + k + 1),
                                              .n = static_cast<double>(block.rows())});
      const cell_entry entry = computed_entry(type, result);
      if (!entry.accepted())
        return "Row " + std::to_string(first + k + 1) + ": " + entry.refusal + ". Nothing was filled.";
      results[k] = std::get<double>(entry.value);
    }
    for (std::size_t k = 0; k < count; ++k) {
      if (results[k] == present[k]) continue;
      old.push_back({static_cast<std::uint32_t>(first + k), static_cast<std::uint32_t>(column), present[k]});
      content.set_value(first + k, column, results[k]);
    }
  }
  return {};
}

// All columns, or none: after a refusal all cells have their old values again.
std::string compute_columns(grid& content, std::span<const std::size_t> columns, const cell_range& block,
                            expression& formula) {
  std::vector<placed<double>> old;
  old.reserve(columns.size() * block.rows());
  std::string refusal;
  try {
    for (const std::size_t c : columns)
      if (refusal.empty()) refusal = compute_column(content, c, block, formula, old);
  } catch (const expression_exception& error) {
    refusal = error.what();
  }
  if (!refusal.empty())
    for (const auto& cell : old) content.set_value(cell.row, cell.column, cell.value);
  return refusal;
}

} // namespace

std::string TFillCalcTable::calculate_selection(std::string_view text) {
  if (shown_as_empty_ || content_->row_count() == 0) return nothing_to_fill;
  cell_range block = selection();
  block.bottom = std::min(block.bottom, content_->row_count() - 1);
  std::vector<std::size_t> numbers, texts; // columns
  for (std::size_t c = block.left; c <= block.right; ++c)
    if (takes_blocks(c)) (content_->columns()[c].type.kind == cell_kind::text ? texts : numbers).push_back(c);
  if (numbers.empty() && texts.empty()) return "The selected cells cannot be changed.";

  std::optional<expression> formula;
  try {
    if (!numbers.empty()) formula.emplace(text);
  } catch (const expression_exception& error) {
    return error.what();
  }

  change one(*this, "Fill/Calc");
  if (formula)
    if (std::string refusal = compute_columns(*content_, numbers, block, *formula); !refusal.empty()) return refusal;
  refused_.reset();
  if (numbers.empty())
    for (const std::size_t c : texts) {
      const cell_value value = read_entry(content_->columns()[c].type, text).value;
      for (std::size_t row = block.top; row <= block.bottom; ++row)
        if (content_->value(row, c) != value) content_->set_value(row, c, value);
    }
  if (view_) view_->cells_changed({block.top, 0, block.bottom, content_->columns().size() - 1}); // including marks
  one.complete();
  return {};
}

std::unique_ptr<general_graph_data> TFillCalcTable::generate_moment_value_graph_data(int date_column, int time_column,
                                                                                     int value_column) const {
  const std::size_t rows = shown_as_empty_ ? 0 : content_->row_count();
  if (rows == 0 || rows > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) return nullptr;
  const auto at = [this](std::size_t row, int column) {
    return number(content_->value(row, static_cast<std::size_t>(column - 1)));
  };
  auto data = std::make_unique<general_graph_data>(static_cast<std::int32_t>(rows));
  for (std::size_t row = 0; row < rows; ++row) {
    const moment_type moment(static_cast<std::int32_t>(at(row, date_column)),
                             static_cast<std::int32_t>(at(row, time_column)));
    data->x[row] = moment.days_since(days_to_1970);
    data->y[row] = at(row, value_column);
  }
  return data;
}

} // namespace vesk
