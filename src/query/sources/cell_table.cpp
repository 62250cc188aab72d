#include "query/sources/cell_table.h"

#include "dataset/moment.h"
#include "query/sources/header_row.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace vesk {

std::string_view text_pool::keep(std::string_view text) {
  if (text.empty()) return {};
  if (text.size() > left_) {
    left_ = std::max(chunk_size, text.size());
    chunks_.push_back(std::make_unique_for_overwrite<char[]>(left_));
    next_ = chunks_.back().get();
  }
  std::memcpy(next_, text.data(), text.size());
  const std::string_view kept(next_, text.size());
  next_ += text.size();
  left_ -= text.size();
  return kept;
}

bool cell_table::add(std::uint32_t row, std::uint32_t column, const table_value& value) {
  if (column >= most_columns || value.is_null()) return true;
  if (values_.size() == most_cells) return false;
  if (rows_.empty() || rows_.back().row != row) rows_.push_back({row, static_cast<std::uint32_t>(values_.size())});
  values_.push_back(value);
  columns_of_values_.push_back(static_cast<std::uint16_t>(column));
  return true;
}

bool cell_table::add_boolean(std::uint32_t row, std::uint32_t column, bool value) {
  if (column >= booleans_.size() && column < most_columns) booleans_.resize(column + 1);
  if (column < booleans_.size()) ++booleans_[column];
  return add(row, column, table_value::of_integer(value));
}

// Brings the cells into the order of their rows and columns, where the file has another one.
void cell_table::sort() {
  bool sorted = true;
  for (std::size_t r = 0; sorted && r < rows_.size(); ++r) {
    sorted = r == 0 || rows_[r - 1].row < rows_[r].row;
    for (std::size_t i = rows_[r].first + 1; sorted && i < end_of(r); ++i)
      sorted = columns_of_values_[i - 1] < columns_of_values_[i];
  }
  if (sorted) return;

  struct place {
    std::uint32_t row, value;
  };
  std::vector<place> places;
  for (std::size_t r = 0; r < rows_.size(); ++r)
    for (std::size_t i = rows_[r].first; i < end_of(r); ++i)
      places.push_back({rows_[r].row, static_cast<std::uint32_t>(i)});
  const auto key = [&](const place& p) { return std::pair(p.row, columns_of_values_[p.value]); };
  std::stable_sort(places.begin(), places.end(), [&](const place& a, const place& b) { return key(a) < key(b); });

  cell_table result;
  for (std::size_t i = 0; i < places.size(); ++i)
    if (i + 1 == places.size() || key(places[i]) != key(places[i + 1])) // the last of several for one cell
      result.add(places[i].row, columns_of_values_[places[i].value], values_[places[i].value]);
  values_ = std::move(result.values_);
  columns_of_values_ = std::move(result.columns_of_values_);
  rows_ = std::move(result.rows_);
}

void cell_table::become_sheet() {
  constexpr std::size_t sample_rows = 200;
  sort();
  std::vector<sample_row> sample(std::min(sample_rows, rows_.size()));
  std::string room;
  const table_column plain{}; // a column of texts
  for (std::size_t r = 0; r < sample.size(); ++r)
    for (std::size_t i = rows_[r].first; i < end_of(r); ++i) {
      sample[r].texts.resize(columns_of_values_[i] + std::size_t{1});
      const table_value text = converted(plain, values_[i], room);
      sample[r].texts.back() = text.is_null() ? "" : std::string(text.text());
      sample[r].values += values_[i].kind() != value_kind::text;
    }
  header found = find_header(sample);
  first_row_ = std::min(found.row + found.rows, rows_.size());

  std::vector<column_votes> votes(found.names.size());
  for (std::size_t i = first_row_ < rows_.size() ? rows_[first_row_].first : values_.size(); i < values_.size(); ++i) {
    if (columns_of_values_[i] >= votes.size()) votes.resize(columns_of_values_[i] + std::size_t{1});
    votes[columns_of_values_[i]].add(values_[i]);
  }
  found.names.resize(votes.size());
  const std::vector<std::string> names = distinct_names(found.names);
  booleans_.resize(std::max(booleans_.size(), votes.size()));
  for (std::uint32_t c = 0; c < votes.size(); ++c) {
    if (votes[c].count() == 0 && found.names[c].empty()) continue;
    column_form form = votes[c].settle();
    if (votes[c].count() > 0 && booleans_[c] == votes[c].count()) form.type = field_type::boolean;
    columns_.push_back({c, form});
    fields_.push_back({names[c], form.type});
  }
  if (fields_.empty()) { // an empty sheet
    columns_.push_back({0, {}});
    fields_.push_back({"F1", field_type::string});
  }
}

void cell_table::become_table(std::vector<table_field> fields, std::uint32_t rows) {
  typed_ = true;
  fields_ = std::move(fields);
  for (std::uint32_t c = 0; c < fields_.size(); ++c) columns_.push_back({c, {.type = fields_[c].type}});
  std::vector<row_start> all;
  for (std::uint32_t r = 0, next = 0; r < rows; ++r) {
    all.push_back({r, next < rows_.size() ? rows_[next].first : static_cast<std::uint32_t>(values_.size())});
    if (next < rows_.size() && rows_[next].row == r) ++next;
  }
  rows_ = std::move(all);
}

const table_value* cell_table::find(std::size_t row, std::uint32_t column) const {
  const std::size_t first = rows_[row].first, end = end_of(row);
  if (first == end || columns_of_values_[first] > column) return nullptr;
  const std::size_t guess = first + (column - columns_of_values_[first]); // right where no cell is empty
  if (guess < end && columns_of_values_[guess] == column) return &values_[guess];
  const auto begin = columns_of_values_.begin();
  const auto found =
      std::lower_bound(begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end), column);
  const auto at = static_cast<std::size_t>(found - begin);
  return at < end && *found == column ? &values_[at] : nullptr;
}

// A value as its column's type has it.
table_value cell_table::converted(const table_column& column, const table_value& value, std::string& room) const {
  const bool is_number = value.kind() == value_kind::number || value.kind() == value_kind::integer;
  switch (column.form.type) {
  case field_type::string: {
    if (value.kind() == value_kind::text) return value.text().empty() ? table_value() : value;
    if (value.kind() == value_kind::date_time) {
      room = date_time_text(moment_type::from_date_time(value.number()));
    } else {
      std::array<char, 32> text;
      room.assign(text.data(), std::to_chars(text.data(), text.data() + text.size(), value.number()).ptr);
    }
    return table_value::of_text(room);
  }
  case field_type::date:
  case field_type::time:
  case field_type::date_time:
    if (value.kind() == value_kind::text) return column.form.read(value.text());
    return is_number ? table_value::of_date_time(value.number()) : value;
  default:
    if (value.kind() == value_kind::text) return column.form.read(value.text());
    if (column.form.type == field_type::integer && value.number() == std::floor(value.number()))
      return table_value::of_integer(static_cast<std::int64_t>(value.number()));
    return value.kind() == value_kind::date_time ? table_value::of_number(value.number()) : value;
  }
}

class cell_cursor : public row_cursor {
public:
  cell_cursor(const cell_table& table, std::vector<row_filter> filters)
      : row_cursor(std::move(filters)), table_(table), next_(table.first_row_), texts_(table.columns_.size()) {}

  table_value value(std::size_t field) override {
    const cell_table::table_column& column = table_.columns_[field];
    const table_value* const value = table_.find(next_ - 1, column.position);
    if (!value) return {};
    return table_.typed_ ? *value : table_.converted(column, *value, texts_[field]);
  }

protected:
  bool advance() override {
    if (next_ >= table_.rows_.size()) return false;
    ++next_;
    return true;
  }

private:
  const cell_table& table_;
  std::size_t next_; // behind the present row
  std::vector<std::string> texts_;
};

std::unique_ptr<row_cursor> cell_table::rows(std::vector<row_filter> filters) const {
  return std::make_unique<cell_cursor>(*this, std::move(filters));
}

} // namespace vesk
