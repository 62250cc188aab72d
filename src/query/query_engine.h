// The way from a stored query to its source: connections, and SQL text as a result set.
//
// A source is one table in a file of its own (kind 1), or a file of several tables (kind 2). Main thread only.
#pragma once

#include "query/sources/table_source.h"
#include "query/sql/table_module.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace vesk {

class import_query;
struct translated_statement;

enum : std::uint8_t { source_unknown = 0, source_one_table = 1, source_several_tables = 2 };

// How a statement is to be read.
struct statement_use {
  std::vector<std::string> fields = {};   // of the columns only these are read, unless it is empty
  std::vector<std::string> literals = {}; // what its first terms compare with, so far as it is known
  bool in_any_order = false;              // the rows need not be put in order
  std::vector<sought_value> sought = {};  // values that are looked for on the way
};

// The rows that a statement gives, one after the other. It holds its source open.
class result_set {
public:
  ~result_set();
  result_set(const result_set&) = delete;
  result_set& operator=(const result_set&) = delete;

  const std::vector<table_field>& fields() const { return fields_; }
  std::size_t position(std::string_view field) const; // of a field that is there

  // Goes to the next row, the first at first; false behind the last. Throws query_engine_exception.
  bool next();

  // Whether each value that is looked for has been seen in the rows that were read so far.
  bool has_found_all() const;

  // A value of the present row. A null has no text and no number. Each throws query_engine_exception, naming file,
  // table and field, for a value that is nothing of the kind.
  bool is_missing(std::size_t field) const; // null, or a text that says so, such as NA
  // Whether a condition can compare its field with this value: not in a field of numbers or dates with a text or with
  // nothing, and not with a number that is none of a date. An empty text stands for no text.
  bool is_comparable(std::size_t field) const;
  double date_and_time(std::size_t field) const; // days since 30 December 1899
  double floating_point(std::size_t field) const;
  std::string text(std::size_t field) const; // empty for a null

private:
  friend class query_engine;
  result_set(std::shared_ptr<table_source> source, std::size_t table, bool ignore_case, const std::string& sql,
             const statement_use& use);
  void prepare(const translated_statement& translated);
  [[noreturn]] void fail() const;
  [[noreturn]] void refuse_value(std::size_t field, const char* wanted) const;

  const std::shared_ptr<table_source> source_;
  module_table table_;
  const std::string sql_; // as it was given
  std::vector<table_field> fields_;
  sqlite3* database_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

class query_engine {
public:
  // `folder`: of the data file, where relative names are looked for first.
  explicit query_engine(std::filesystem::path folder = {}) : folder_(std::move(folder)) {}

  // Opens a statement on the query's source. Throws query_engine_exception.
  std::unique_ptr<result_set> open(const import_query& query, const std::string& sql, const statement_use& use = {});

  // Makes sure that the connection is one to the query's file as it stands now. Throws query_engine_exception.
  void connect(const import_query& query);

  // Closes the file of a source of kind 2. What has been read of it stays for the next connection to the same file.
  void disconnect(const import_query& query);

  // False when a file has changed since it was opened, so that what was read of it may not belong together.
  bool is_up_to_date() const;

  std::vector<std::string> list_tables(const import_query& query);

  // Whether a file holds several tables, and where it is.
  std::uint8_t kind_of(const std::string& file_name) const;

private:
  // A file as it stood when it was opened.
  struct file_state {
    std::filesystem::path file;
    std::filesystem::file_time_type written;
    std::uintmax_t size = 0;
    friend bool operator==(const file_state&, const file_state&) = default;
  };
  static file_state state_of(std::filesystem::path file);

  std::filesystem::path resolved(const std::string& file_name) const;
  std::shared_ptr<table_source> source_of(const std::string& file_name);

  const std::filesystem::path folder_;
  std::vector<file_state> connection_;   // the file, and those that its source reads besides
  std::shared_ptr<table_source> source_; // of connection_; null before the first
};

} // namespace vesk
