// A workbook: sheets are read whole when first requested, and kept in memory.
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
  static constexpr std::size_t longest_text = 32767; // of a cell, in characters, as in spreadsheet programs
  // In bytes. Many cells can share a text, so a small file can contain a lot of text.
  static constexpr std::size_t most_shared_texts = std::size_t{256} << 20;
  static constexpr std::size_t most_texts = std::size_t{1} << 30; // of all cells
  static constexpr std::size_t most_sheets = 10'000;

  // These throw table_source_exception if a limit is exceeded.
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

  // Fills `cells` and completes it. Throws table_source_exception.
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

// Dates in a workbook are numbers with a date format.
struct workbook_dates {
  bool from_1904 = false; // day 0 is 1 January 1904

  // The date-time number of a cell. Days below 60 count from 31 December 1899, because in workbooks 1900 is a leap
  // year; a number below 1 is a time without a date.
  double number(double cell) const;
};

// Whether a number format shows dates or times: it has their letters outside quotes and brackets. `[h]:mm` counts too.
bool is_date_format(std::string_view format);

// The same for built-in formats, which a workbook gives only by number.
bool is_date_format(unsigned built_in);

} // namespace vesk
