// Files with tables, read by stored queries: one interface for all formats.
//
// Nothing is written. A source is used by one thread at a time; its cursors refer to it and must not outlive it.
#pragma once

#include "query/cancellation.h"
#include "query/query_exceptions.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// The fault and its location: "river.dbf, table flows, field FLOW: record 17 has "1x" where a number should be."
class table_source_exception : public query_engine_exception {
public:
  // `table` and `field` may be empty; `cause` ends with a full stop.
  table_source_exception(std::string file, std::string table, std::string field, std::string cause,
                         query_fault fault = query_fault::unfit);

  // A complete sentence that contains the file name.
  table_source_exception(std::string file, const std::string& sentence)
      : query_engine_exception(sentence), file_(std::move(file)), cause_(sentence) {}

  const std::string& file() const { return file_; }
  const std::string& table() const { return table_; }
  const std::string& field() const { return field_; }
  const std::string& cause() const { return cause_; }

private:
  std::string file_, table_, field_, cause_;
};

// The type codes of fields in stored queries.
enum class field_type : std::uint8_t {
  unknown = 0,
  string = 1,
  small_integer = 2,
  integer = 3,
  word = 4,
  boolean = 5,
  floating = 6,
  currency = 7,
  bcd = 8,
  date = 9,
  time = 10,
  date_time = 11,
  bytes = 12,
  auto_increment = 14,
  blob = 15,
  memo = 16,
  large_integer = 25
};

bool is_date_or_time(field_type type);
bool is_number(field_type type); // flags included

struct table_field {
  std::string name; // UTF-8, not empty, unique in the table ignoring case
  field_type type = field_type::unknown;

  friend bool operator==(const table_field&, const table_field&) = default;
};

enum class value_kind : std::uint8_t { null, integer, number, date_time, text };

// One value of a row. A text is not owned.
class table_value {
public:
  constexpr table_value() = default; // null
  static constexpr table_value of_integer(std::int64_t integer) {
    table_value value;
    value.kind_ = value_kind::integer;
    value.integer_ = integer;
    return value;
  }
  static constexpr table_value of_number(double number) { return {value_kind::number, number}; }
  // Days since 30 December 1899; a time without a date is below 1.
  static constexpr table_value of_date_time(double serial) { return {value_kind::date_time, serial}; }
  static constexpr table_value of_text(std::string_view utf8) {
    table_value value;
    value.kind_ = value_kind::text;
    value.size_ = utf8.size() < std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(utf8.size())
                                                                          : std::numeric_limits<std::uint32_t>::max();
    value.text_ = utf8.data();
    return value;
  }

  constexpr value_kind kind() const { return kind_; }
  constexpr bool is_null() const { return kind_ == value_kind::null; }
  constexpr std::int64_t integer() const { return integer_; } // of an integer
  // Of an integer, a number or a date-time.
  constexpr double number() const { return kind_ == value_kind::integer ? static_cast<double>(integer_) : number_; }
  constexpr std::string_view text() const { return {text_, size_}; } // of a text

private:
  constexpr table_value(value_kind kind, double number) : kind_(kind), number_(number) {}

  value_kind kind_ = value_kind::null;
  std::uint32_t size_ = 0;
  union {
    std::int64_t integer_ = 0;
    double number_;
    const char* text_;
  };
};
static_assert(sizeof(table_value) == 16);

// A condition that a cursor may use to skip rows early; those of one cursor are combined by AND. Only rows that fail it
// are skipped: null always fails, a value of another kind than the condition's never does.
struct row_filter {
  enum class test : std::uint8_t { equal_text, at_least, at_most };
  std::size_t field = 0;
  test kind = test::equal_text;
  std::string text = {};    // of equal_text
  bool ignore_case = false; // of ASCII letters
  double number = 0;        // of at_least and at_most: for numbers and date-times

  bool leaves_out(const table_value& value) const;
};

// Reads the rows of a table, from the first to the last.
//
// A value is decoded only when requested, so unused fields cost nothing.
class row_cursor {
public:
  explicit row_cursor(std::vector<row_filter> filters) : filters_(std::move(filters)) {}
  virtual ~row_cursor() = default;
  row_cursor(const row_cursor&) = delete;
  row_cursor& operator=(const row_cursor&) = delete;

  // Moves to the next row that passes the filters, at first to the first one; false after the last. Throws
  // table_source_exception and query_cancelled.
  bool next() {
    while (advance()) {
      constexpr std::uint64_t between_asking = 1 << 12;
      if (++rows_ % between_asking == 0) stop_if_cancelled();
      if (passes()) return true;
    }
    return false;
  }

  // A value of the current row. A text is valid until the next call of `next`. Throws table_source_exception.
  virtual table_value value(std::size_t field) = 0;

  // The number of the current row, from 1; rows skipped by the filters are counted too.
  std::uint64_t row_number() const { return rows_; }

protected:
  virtual bool advance() = 0;

private:
  bool passes() {
    table_value read;
    const row_filter* last = nullptr; // the one whose field was read last
    for (const row_filter& filter : filters_) {
      if (!last || last->field != filter.field) read = value(filter.field);
      if (filter.leaves_out(read)) return false;
      last = &filter;
    }
    return true;
  }

  std::vector<row_filter> filters_;
  std::uint64_t rows_ = 0;
};

class table_source {
public:
  explicit table_source(std::string file) : file_(std::move(file)) {}
  virtual ~table_source() = default;
  table_source(const table_source&) = delete;
  table_source& operator=(const table_source&) = delete;

  const std::string& file() const { return file_; } // as requested, for messages

  // The names of the tables. If the file is a single table, that is the file name.
  const std::vector<std::string>& tables() const { return tables_; }

  // The position of a table, see find_table_name. In a file that is one table every name is that table's. Throws
  // table_source_exception.
  std::size_t find_table(std::string_view name) const;

  // The fields of a table, at least one, in order. Throws table_source_exception.
  virtual const std::vector<table_field>& fields(std::size_t table) = 0;

  // Any number of cursors may be open at once. Throws table_source_exception.
  virtual std::unique_ptr<row_cursor> rows(std::size_t table, std::vector<row_filter> filters = {}) = 0;

  // Other files that it reads, such as a memo file.
  const std::vector<std::string>& companions() const { return companions_; }

  // Closes the file until it is needed again. Open cursors remain usable.
  virtual void let_go() {}

protected:
  std::vector<std::string> tables_, companions_;

private:
  std::string file_;
};

// Letters A to Z and a to z count as equal.
bool equal_ignoring_case(std::string_view a, std::string_view b);

// The position of a table: by its name, else by its name regardless of case, else by the name of a sheet as the Jet
// provider gives it, with a dollar sign after it or between apostrophes. Nothing when there is none.
std::optional<std::size_t> find_table_name(const std::vector<std::string>& tables, std::string_view name);

// Names for the fields of a table: an empty name becomes "F" and the position, counted from 1; one that stands already
// gets "_1", "_2" and so on. A null character becomes a blank.
std::vector<std::string> distinct_names(std::vector<std::string> names);

} // namespace vesk
