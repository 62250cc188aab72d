#include "query/sources/cell_table.h"

#include "dataset/moment.h"
#include "query/sources/text/header_row.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <tuple>

namespace vesk {

std::string_view text_pool::keep(std::string_view text) {
  if (text.empty()) return {};
  char* place = next_;
  if (text.size() > chunk_size / 8) { // gets its own chunk, so that little of the current one is wasted
    place = chunks_.emplace_back(std::make_unique_for_overwrite<char[]>(text.size())).get();
  } else {
    if (text.size() > left_) {
      place = chunks_.emplace_back(std::make_unique_for_overwrite<char[]>(chunk_size)).get();
      left_ = chunk_size;
    }
    next_ = place + text.size();
    left_ -= text.size();
  }
  std::memcpy(place, text.data(), text.size());
  return {place, text.size()};
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

// Sorts the cells by row and column, if the file has them in another order.
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
  places.reserve(values_.size());
  for (std::size_t r = 0; r < rows_.size(); ++r)
    for (std::size_t i = rows_[r].first; i < end_of(r); ++i)
      places.push_back({rows_[r].row, static_cast<std::uint32_t>(i)});
  rows_ = {};
  std::sort(places.begin(), places.end(), [&](const place& a, const place& b) {
    return std::tuple(a.row, columns_of_values_[a.value], a.value) <
           std::tuple(b.row, columns_of_values_[b.value], b.value);
  });

  // In place, since there may be many cells: rotates each cycle of the permutation.
  for (std::uint32_t begin = 0; begin < places.size(); ++begin) {
    const table_value value = values_[begin];
    const std::uint16_t column = columns_of_values_[begin];
    std::uint32_t to = begin;
    for (std::uint32_t from = places[to].value; from != begin; from = places[to].value) {
      values_[to] = values_[from];
      columns_of_values_[to] = columns_of_values_[from];
      places[to].value = to;
      to = from;
    }
    values_[to] = value;
    columns_of_values_[to] = column;
    places[to].value = to;
  }

  std::uint32_t kept = 0;
  for (std::size_t i = 0; i < places.size(); ++i) {
    const std::uint32_t row = places[i].row;
    const bool is_last = i + 1 == places.size() || places[i + 1].row != row; // of several for one cell, the last counts
    if (!is_last && columns_of_values_[i + 1] == columns_of_values_[i]) continue;
    if (rows_.empty() || rows_.back().row != row) rows_.push_back({row, kept});
    values_[kept] = values_[i];
    columns_of_values_[kept++] = columns_of_values_[i];
  }
  values_.resize(kept);
  columns_of_values_.resize(kept);
}

void cell_table::become_sheet() {
  sort();
  header_sample sample;
  std::string room;
  const table_column plain{}; // a column of texts
  for (std::size_t r = 0; r < rows_.size() && !sample.is_full(); ++r) {
    sample.begin_row();
    for (std::size_t i = rows_[r].first; i < end_of(r); ++i) {
      const table_value text = converted(plain, values_[i], room);
      sample.add(columns_of_values_[i], text.is_null() ? std::string_view() : text.text(),
                 values_[i].kind() != value_kind::text);
    }
  }
  header found = find_header(sample.rows());
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
  const std::size_t guess = first + (column - columns_of_values_[first]); // correct if no cell is empty
  if (guess < end && columns_of_values_[guess] == column) return &values_[guess];
  const auto begin = columns_of_values_.begin();
  const auto found =
      std::lower_bound(begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end), column);
  const auto at = static_cast<std::size_t>(found - begin);
  return at < end && *found == column ? &values_[at] : nullptr;
}

// A value converted to its column's type.
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
  std::size_t next_; // after the current row
  std::vector<std::string> texts_;
};

std::unique_ptr<row_cursor> cell_table::rows(std::vector<row_filter> filters) const {
  return std::make_unique<cell_cursor>(*this, std::move(filters));
}

} // namespace vesk
