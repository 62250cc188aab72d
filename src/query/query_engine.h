// The way from a stored query to its source: connections, and statements as result sets.
//
// A source is a file that is one table (kind 1), or a file of several tables (kind 2). One thread at a time.
#pragma once

#include "dataset/records.h"
#include "query/sources/table_source.h"
#include "query/sql/select_statement.h"
#include "query/sql/table_module.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace vesk {

class import_query;

enum : std::uint8_t { source_unknown = 0, source_one_table = 1, source_several_tables = 2 };

// How a statement is to be read.
struct statement_use {
  std::vector<std::string> columns = {};     // the names of the fields of the rows, none for all
  bool in_any_order = false;                 // the rows need not be put in order
  std::vector<sought_value> sought = {};     // values that are looked for on the way
  std::optional<std::size_t> most_rows = {}; // only the first ones
};

// The rows that a statement gives, one after the other. It holds its source open.
class result_set {
public:
  ~result_set();
  result_set(const result_set&) = delete;
  result_set& operator=(const result_set&) = delete;

  const std::vector<table_field>& fields() const { return fields_; } // of the rows

  // Goes to the next row, the first at first; false after the last. Throws query_engine_exception and query_cancelled.
  bool next();

  // The values that are looked for; `found` are those that the rows read so far had.
  const std::vector<sought_value>& sought() const { return table_.sought; }

  // Fails with a sentence that names file, table, field and the text, which is not `wanted`, "a number" for instance.
  [[noreturn]] void refuse(std::size_t field, const std::string& text, const char* wanted) const;

  // A value of the present row.
  bool is_missing(std::size_t field) const; // null, or a text that says so, such as NA
  // Whether a condition can compare its field with this value: not with a null or a blank text, and in a field of
  // numbers or dates not with a text, nor with a number that is not a date.
  bool is_comparable(std::size_t field) const;
  // Days since 30 December 1899. Throws query_engine_exception, as `refuse` does, for what is not a date.
  double date_and_time(std::size_t field) const;
  // Nothing for a null, for a text that is not a number, and for a number that is not finite.
  std::optional<double> number(std::size_t field) const;
  std::string text(std::size_t field) const; // empty for a null

private:
  friend class query_engine;
  result_set(std::shared_ptr<table_source> source, std::size_t table, const select_statement& statement,
             const statement_use& use);
  void prepare(const sqlite_statement& printed);
  [[noreturn]] void fail() const;

  const std::shared_ptr<table_source> source_;
  module_table table_;
  const std::string statement_text_; // as it is shown
  std::vector<table_field> fields_;
  sqlite3* database_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

class query_engine {
public:
  // `folder`: of the data file, where relative names are looked for first.
  explicit query_engine(std::filesystem::path folder = {}) : folder_(std::move(folder)) {}

  // A copy opens its source again, since a source belongs to one thread.
  query_engine(const query_engine& other) : folder_(other.folder_) {}
  query_engine(query_engine&&) = default;
  query_engine& operator=(const query_engine& other) { return *this = query_engine(other.folder_); }
  query_engine& operator=(query_engine&&) = default;

  // Takes over the other one's source, which need not be opened again.
  void take_connection(query_engine& other);

  // Opens a statement on the query's source. Throws query_engine_exception.
  std::unique_ptr<result_set> open(const import_query& query, const select_statement& statement,
                                   const statement_use& use = {});

  // The fields of the query's table. Throws query_engine_exception.
  std::vector<table_field> fields_of(const import_query& query);

  // Makes sure that the connection is to the query's file in its present state. Throws query_engine_exception.
  void connect(const import_query& query);

  // Closes the file of a source of kind 2. What has been read of it stays for the next connection to the same file.
  void disconnect(const import_query& query);

  // False when a file has changed since it was opened, so that what was read of it may not belong together.
  bool is_up_to_date() const;

  // When the files of the connection were last written, when it was made. By the clock of the machine that has them,
  // which may be ahead of this one's.
  fill_time last_written() const;

  std::vector<std::string> list_tables(const import_query& query);

  // Whether a file holds several tables, and where it is.
  std::uint8_t kind_of(const std::string& file_name) const;

private:
  // The state of a file when it was opened.
  struct file_state {
    std::filesystem::path file;
    std::filesystem::file_time_type written;
    std::uintmax_t size = 0;
    friend bool operator==(const file_state&, const file_state&) = default;
  };
  static file_state state_of(std::filesystem::path file);

  std::filesystem::path resolved(const std::string& file_name) const;
  std::shared_ptr<table_source> source_of(const std::string& file_name);
  std::shared_ptr<table_source> source_of(const import_query& query);

  std::filesystem::path folder_;
  std::vector<file_state> connection_;   // the file, and those that its source reads besides
  std::shared_ptr<table_source> source_; // of connection_; null before the first
};

} // namespace vesk
