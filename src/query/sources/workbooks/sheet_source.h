// A workbook: sheets that are read whole when they are first asked for, and kept.
#pragma once

#include "query/sources/cell_table.h"
#include "query/sources/table_source.h"

#include <memory>
#include <vector>

namespace vesk {

class sheet_source : public table_source {
public:
  using table_source::table_source;

  const std::vector<table_field>& fields(std::size_t table) final { return sheet(table).fields(); }
  std::unique_ptr<row_cursor> rows(std::size_t table, std::vector<row_filter> filters) final {
    return sheet(table).rows(std::move(filters));
  }

protected:
  static constexpr std::size_t longest_text = 32767; // of a cell, in characters, as in the programs that write sheets
  // Bytes. Cells share the shared texts, so few bytes of a file can be read of many of them.
  static constexpr std::size_t most_shared_texts = std::size_t{256} << 20;
  static constexpr std::size_t most_texts = std::size_t{1} << 30; // of all cells
  static constexpr std::size_t most_sheets = 10'000;

  // These throw table_source_exception for what is too much.
  void add_sheet(std::string name);
  void add_shared_text(std::string_view text);
  std::string_view keep(std::string_view text); // of any length
  std::string_view keep_text_of_cell(std::string_view text);
  // Appends a piece of the text of a cell.
  void append(std::string& text, std::string_view piece) const {
    constexpr std::size_t bytes_of_character = 4; // at most
    text += piece;
    if (text.size() > bytes_of_character * longest_text) check_length(text);
  }

  // Fills `cells` and ends the adding. Throws table_source_exception.
  virtual void read_sheet(std::size_t table, cell_table& cells) = 0;

  [[noreturn]] void fail(const std::string& table, std::string cause) const {
    throw table_source_exception(file(), table, "", std::move(cause));
  }
  void refuse_without_sheets() const {
    if (tables_.empty()) fail("", "the workbook has no worksheets.");
  }
  [[noreturn]] void fail_too_large(std::size_t table) const {
    fail(tables_[table], "the table has more than " + std::to_string(cell_table::most_cells) + " cells.");
  }

  std::vector<std::string_view> shared_texts_;

private:
  void check_length(std::string_view text) const;
  std::string_view keep_within(std::string_view text, std::size_t most);

  text_pool texts_; // of all sheets
  std::size_t texts_size_ = 0;
  cell_table& sheet(std::size_t table) {
    sheets_.resize(tables_.size());
    if (!sheets_[table]) {
      auto cells = std::make_unique<cell_table>();
      read_sheet(table, *cells);
      sheets_[table] = std::move(cells);
    }
    return *sheets_[table];
  }

  std::vector<std::unique_ptr<cell_table>> sheets_;
};

// Dates in a workbook: numbers with the format of a date.
struct workbook_dates {
  bool from_1904 = false; // day 0 is 1 January 1904

  // The date-time number of a cell. Days below 60 count on from 31 December 1899, since the 1900 of workbooks has a
  // leap day; a number below 1 is a time alone.
  double number(double cell) const;
};

// Whether a number format shows dates or times: letters of one outside of quotes and brackets. `[h]:mm` does too.
bool is_date_format(std::string_view format);

// The same for the formats that a workbook knows by number alone.
bool is_date_format(unsigned built_in);

} // namespace vesk
