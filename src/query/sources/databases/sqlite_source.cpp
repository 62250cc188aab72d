#include "query/sources/databases/sqlite_source.h"

#include "dataset/text_encoding.h"
#include "platform/code_page.h"
#include "query/sources/databases/sqlite_file.h"
#include "query/sources/text/column_form.h"
#include "query/sources/text/date_text.h"
#include "query/sqlite_names.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <sqlite3.h>

namespace vesk {

namespace {

std::string_view text_of(sqlite3_stmt* statement, int column) {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  return text ? std::string_view(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)))
              : std::string_view();
}

// A column as stored in the database. Its name may be invalid UTF-8.
struct stored_column {
  std::string name;
  bool keeps_texts; // numbers stored in it become texts
};

using statement_handle = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

class sqlite_source : public table_source {
public:
  explicit sqlite_source(std::string name) : table_source(std::move(name)) {
    companions_ = {file() + "-wal"};
    const auto list = prepare("SELECT name FROM sqlite_schema WHERE type IN ('table', 'view') AND name NOT LIKE "
                              "'sqlite\\_%' ESCAPE '\\' ORDER BY rowid",
                              "");
    while (step(list.get(), "")) stored_names_.emplace_back(text_of(list.get(), 0));
    for (const std::string& stored : stored_names_) tables_.push_back(shown_text(stored));
    if (tables_.empty()) throw table_source_exception(file(), "", "", "the database has no tables.");
  }

  const std::vector<table_field>& fields(std::size_t table) override;
  std::unique_ptr<row_cursor> rows(std::size_t table, std::vector<row_filter> filters) override;
  void let_go() override { database_.reset(); }

private:
  friend class sqlite_cursor;

  sqlite3* database() {
    if (!database_) database_ = open_sqlite_file(file());
    return database_.get();
  }

  statement_handle prepare(const std::string& sql, const std::string& table) {
    sqlite3_stmt* statement = nullptr;
    sqlite3* const of = database();
    if (sqlite3_prepare_v2(of, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) fail(of, table);
    return {statement, sqlite3_finalize};
  }
  bool step(sqlite3_stmt* statement, const std::string& table) const {
    const int state = sqlite3_step(statement);
    if (state != SQLITE_ROW && state != SQLITE_DONE) fail(sqlite3_db_handle(statement), table);
    return state == SQLITE_ROW;
  }
  [[noreturn]] void fail(sqlite3* database, const std::string& table) const {
    stop_if_cancelled();
    throw table_source_exception(file(), shown_text(table), "",
                                 shown_text(database ? sqlite3_errmsg(database) : "not enough memory") + ".");
  }

  field_type sampled_type(const std::string& table, const std::string& column, field_type declared);

  sqlite_handle database_; // null while the file is closed
  std::map<std::size_t, std::vector<table_field>> fields_;
  std::map<std::size_t, std::vector<stored_column>> columns_; // of the same tables
  std::vector<std::string> stored_names_;                     // the tables' names in the database
};

// The type for a column declaration: the first row whose word occurs in it. Other declarations mean text here; SQLite
// also treats them as text unless they imply a number.
field_type declared_type(std::string_view declaration) {
  struct row {
    std::string_view word;
    field_type type;
  };
  static constexpr row rows[] = {
      {"DATETIME", field_type::date_time}, {"TIMESTAMP", field_type::date_time}, {"DATE", field_type::date},
      {"TIME", field_type::time},          {"BOOL", field_type::boolean},        {"INT", field_type::large_integer},
      {"CHAR", field_type::string},        {"CLOB", field_type::string},         {"TEXT", field_type::string},
      {"BLOB", field_type::blob},          {"REAL", field_type::floating},       {"FLOA", field_type::floating},
      {"DOUB", field_type::floating},      {"NUM", field_type::floating},        {"DEC", field_type::floating},
      {"MONEY", field_type::currency},
  };
  for (const row& r : rows)
    if (declaration.find(r.word) != declaration.npos) return r.type;
  return declaration.empty() ? field_type::unknown : field_type::string;
}

// Whether the database converts numbers stored in such a column to texts.
bool keeps_texts(std::string_view declaration) {
  const auto has = [&](std::string_view word) { return declaration.find(word) != declaration.npos; };
  return !has("INT") && (has("CHAR") || has("CLOB") || has("TEXT"));
}

std::string upper(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return result;
}

const std::vector<table_field>& sqlite_source::fields(std::size_t table) {
  if (const auto known = fields_.find(table); known != fields_.end()) return known->second;
  const std::string& name = stored_names_[table];
  const auto list =
      prepare("SELECT name, type FROM pragma_table_xinfo(" + sql_quoted(name, '\'') + ") WHERE hidden <> 1", name);
  std::vector<table_field> fields;
  std::vector<std::string> names;
  std::vector<stored_column> columns;
  while (step(list.get(), name)) {
    const std::string declaration = upper(text_of(list.get(), 1));
    columns.push_back({std::string(text_of(list.get(), 0)), keeps_texts(declaration)});
    table_field field{"", declared_type(declaration)};
    if (!is_date_or_time(field.type) && field.type != field_type::blob)
      field.type = sampled_type(name, columns.back().name, field.type);
    fields.push_back(field);
    names.push_back(shown_text(columns.back().name));
  }
  if (fields.empty()) throw table_source_exception(file(), tables_[table], "", "it has no fields.");
  names = distinct_names(std::move(names));
  for (std::size_t i = 0; i < fields.size(); ++i) fields[i].name = std::move(names[i]);
  columns_[table] = std::move(columns);
  return fields_[table] = std::move(fields);
}

// A column declared with a number type may contain dates too, as does a copy of a column declared with a date type.
field_type sqlite_source::sampled_type(const std::string& table, const std::string& column, field_type declared) {
  const auto sample = prepare("SELECT c FROM (SELECT t." + sql_quoted(column) + " AS c FROM " + sql_quoted(table) +
                                  " AS t LIMIT " + std::to_string(rows_sampled) + ") WHERE c IS NOT NULL",
                              table);
  const bool is_declared = declared != field_type::unknown;
  std::uint64_t texts = 0, dates = 0, with_time = 0;
  column_votes numbers;
  while (step(sample.get(), table)) {
    const int stored = sqlite3_column_type(sample.get(), 0);
    if (stored != SQLITE_TEXT && is_declared && declared != field_type::string) return declared;
    switch (stored) {
    case SQLITE_INTEGER: numbers.add(table_value::of_integer(0)); continue;
    case SQLITE_FLOAT: numbers.add(table_value::of_number(0.5)); continue;
    default: ++texts;
    }
    const auto date = read_date(text_of(sample.get(), 0), date_form::iso);
    if (!date && is_declared) return declared;
    dates += date.has_value();
    with_time += date && date->has_time;
  }
  if (texts > 0 && dates == texts) return with_time ? field_type::date_time : field_type::date;
  if (is_declared) return declared;
  if (texts > 0) return field_type::string;
  const field_type type = numbers.settle().type;
  return type == field_type::integer ? field_type::large_integer : type;
}

class sqlite_cursor : public row_cursor {
public:
  sqlite_cursor(const sqlite_source& source, const std::vector<table_field>& fields, const std::string& table,
                statement_handle statement, std::vector<row_filter> filters)
      : row_cursor(std::move(filters)), source_(source), fields_(fields), table_(table),
        statement_(std::move(statement)), texts_(fields.size()) {}

  table_value value(std::size_t field) override {
    const field_type type = fields_[field].type;
    const int column = static_cast<int>(field);
    const int stored = sqlite3_column_type(statement_.get(), column);
    if (stored == SQLITE_NULL || stored == SQLITE_BLOB || type == field_type::blob) return {};
    if (is_date_or_time(type)) { // used by each condition on it
      if (dated_row_ != row_number() || dated_column_ != column) dated_ = date(type, stored, column);
      dated_row_ = row_number();
      dated_column_ = column;
      return dated_;
    }
    if (type == field_type::string || stored == SQLITE_TEXT)
      return column_form{.type = type == field_type::string ? type : field_type::floating}.read(text(column));
    if (stored == SQLITE_INTEGER) return table_value::of_integer(sqlite3_column_int64(statement_.get(), column));
    return table_value::of_number(sqlite3_column_double(statement_.get(), column));
  }

protected:
  bool advance() override { return source_.step(statement_.get(), table_); }

private:
  std::string_view text(int column) {
    const std::string_view stored = text_of(statement_.get(), column);
    if (is_ascii(stored)) return stored;
    return texts_[static_cast<std::size_t>(column)] = shown_text(stored);
  }

  table_value date(field_type type, int stored, int column) {
    constexpr double julian_origin = 2415018.5, unix_origin = 25569, seconds = 86400;
    if (stored == SQLITE_INTEGER)
      return table_value::of_date_time(
          to_milliseconds(unix_origin + static_cast<double>(sqlite3_column_int64(statement_.get(), column)) / seconds));
    if (stored == SQLITE_FLOAT) {
      const double day = sqlite3_column_double(statement_.get(), column);
      return std::isfinite(day) ? table_value::of_date_time(to_milliseconds(day - julian_origin)) : table_value();
    }
    const std::string_view read = text(column);
    const auto moment = read_date(read, type == field_type::time ? date_form::time_only : date_form::iso);
    return moment ? table_value::of_date_time(moment->serial) : table_value::of_text(read);
  }

  const sqlite_source& source_;
  const std::vector<table_field>& fields_;
  const std::string& table_;
  statement_handle statement_;
  std::vector<std::string> texts_; // of the current row, by field, for values that need conversion
  // The date that was read last, and its position.
  table_value dated_;
  std::uint64_t dated_row_ = 0;
  int dated_column_ = 0;
};

// The day of a date-time number; a very distant one if the number is not a date.
std::chrono::year_month_day date_of_serial(double serial) {
  const double day = std::abs(serial) < 1e7 ? std::floor(serial) : -1e7;
  return std::chrono::sys_days(std::chrono::year(1899) / 12 / 30) + std::chrono::days(static_cast<int>(day));
}

// The part of a filter that the database can evaluate, so that it does not return all rows: a term that is true for
// every row that passes the filter. Empty if there is none.
std::string prefilter(const row_filter& filter, const table_field& field, const stored_column& stored) {
  const std::string column = "t." + sql_quoted(stored.name);
  const bool at_least = filter.kind == row_filter::test::at_least;
  if (filter.kind == row_filter::test::equal_text) {
    // Text that is not UTF-8 in the database was converted here.
    const bool is_unchanged = is_ascii(filter.text) && filter.text.find('\0') == filter.text.npos;
    if (field.type != field_type::string || !is_unchanged) return {};
    return (stored.keeps_texts ? column : "CAST(" + column + " AS TEXT)") + " = " + sql_quoted(filter.text, '\'') +
           (filter.ignore_case ? " COLLATE NOCASE" : " COLLATE BINARY");
  }
  if (field.type != field_type::date && field.type != field_type::date_time) return {};
  // Texts that begin with a year can be compared as texts: within a century, no text of a day or later sorts before
  // that day in two-digit months and days, and no text of a year or earlier sorts after the year. Other texts, and
  // numbers, which sort before all texts, are not filtered here. A time of 24:00 belongs to the next day.
  const auto day = date_of_serial(at_least ? std::ceil(filter.number - 1) : filter.number);
  const int year = static_cast<int>(day.year()) + !at_least;
  if (year < 1100 || year > 9999) return {};
  char bound[16];
  std::snprintf(bound, sizeof bound, "%04d-%02u-%02u", year, static_cast<unsigned>(day.month()) % 100,
                static_cast<unsigned>(day.day()) % 100);
  const std::string text = "+" + column + " COLLATE BINARY "; // as stored
  const auto before = [&](int century) { return text + "< '" + std::to_string(century) + "0'"; };
  const auto after = [&](int century) { return text + ">= '" + std::to_string(century) + ":'"; }; // ':' follows '9'
  const int century = year / 100;
  if (!at_least) return "(" + text + "< '" + std::to_string(year) + "' OR " + after(century) + ")";
  return "(" + text + ">= '" + bound + "' OR " + before(century) + " AND (" + before(century - 1) + " OR " +
         after(century - 1) + "))";
}

std::unique_ptr<row_cursor> sqlite_source::rows(std::size_t table, std::vector<row_filter> filters) {
  const std::vector<table_field>& all = fields(table);
  std::string sql = "SELECT ";
  const std::vector<stored_column>& columns = columns_[table];
  for (std::size_t i = 0; i < columns.size(); ++i) // blobs, which may be large, are not read
    sql += (i ? ", " : "") + (all[i].type == field_type::blob ? "NULL" : "t." + sql_quoted(columns[i].name));
  sql += " FROM " + sql_quoted(stored_names_[table]) + " AS t";
  const char* link = " WHERE ";
  std::vector<row_filter> left; // filters that the database cannot evaluate completely
  for (row_filter& filter : filters) {
    const std::string term = prefilter(filter, all[filter.field], columns[filter.field]);
    if (!term.empty()) {
      sql += link + term;
      link = " AND ";
    }
    const bool is_exact = filter.kind == row_filter::test::equal_text && columns[filter.field].keeps_texts;
    if (term.empty() || !is_exact) left.push_back(std::move(filter));
  }
  return std::make_unique<sqlite_cursor>(*this, all, tables_[table], prepare(sql, tables_[table]), std::move(left));
}

} // namespace

std::unique_ptr<table_source> open_sqlite(const std::filesystem::path& file) {
  return std::make_unique<sqlite_source>(file.string());
}

} // namespace vesk
