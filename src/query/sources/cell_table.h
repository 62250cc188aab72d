// The cells of a sheet, or the rows of a table that is slow to read, kept in memory.
#pragma once

#include "query/sources/table_source.h"
#include "query/sources/text/column_form.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// Keeps texts at fixed addresses until it is destroyed.
class text_pool {
public:
  std::string_view keep(std::string_view text);

private:
  static constexpr std::size_t chunk_size = std::size_t{64} << 10;
  std::vector<std::unique_ptr<char[]>> chunks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;
};

class cell_table {
public:
  // The largest number of cells accepted; they take 600 MB.
  static constexpr std::size_t most_cells = std::size_t{1} << 25;
  static constexpr std::uint32_t most_columns = 1 << 14;

  // A cell of a sheet. Rows and columns count from 0; columns from `most_columns` on are ignored, as are null cells. A
  // text must outlive the table. False if there are too many cells.
  bool add(std::uint32_t row, std::uint32_t column, const table_value& value);
  bool add_boolean(std::uint32_t row, std::uint32_t column, bool value);

  // Call one of these after the last cell. `become_sheet` finds the header, determines the type of each column and
  // drops columns without name and values. `become_table` uses the given fields, one per column, and keeps rows without
  // values: `rows` is their number.
  void become_sheet();
  void become_table(std::vector<table_field> fields, std::uint32_t rows);

  const std::vector<table_field>& fields() const { return fields_; }
  std::unique_ptr<row_cursor> rows(std::vector<row_filter> filters) const;

private:
  friend class cell_cursor;

  // The cells of a row are those from `first` to the next row's `first`.
  struct row_start {
    std::uint32_t row;
    std::uint32_t first;
  };
  struct table_column {
    std::uint32_t position; // in the sheet
    column_form form;
  };

  void sort();
  std::size_t end_of(std::size_t row) const { return row + 1 < rows_.size() ? rows_[row + 1].first : values_.size(); }
  const table_value* find(std::size_t row, std::uint32_t column) const;
  table_value converted(const table_column& column, const table_value& value, std::string& room) const;

  std::vector<table_value> values_;
  std::vector<std::uint16_t> columns_of_values_;
  std::vector<row_start> rows_;
  std::vector<std::uint32_t> booleans_; // number of them in each column
  std::vector<table_column> columns_;
  std::vector<table_field> fields_;
  std::size_t first_row_ = 0; // the table's first one, in `rows_`
  bool typed_ = false;
};

} // namespace vesk
