// A statement that is translated is one that SQLite accepts, that only reads, that is one statement to its end, and
// that runs; and the table that it names is found in it.
#include "query/sql/select_statement.h"
#include "query/sql/table_module.h"
#include "support/scratch.h"

#include <sqlite3.h>
#include <utility>

namespace {

using namespace vesk;

const std::vector<table_field> fields = {{"Order", field_type::integer},        {"Sale Date", field_type::date},
                                         {"Flow (m3/s)", field_type::floating}, {"Flow", field_type::floating},
                                         {"Station", field_type::string},       {"and", field_type::string},
                                         {"Wet", field_type::boolean},          {"a]\"'b", field_type::memo},
                                         {"At", field_type::date_time},         {"x=1", field_type::bcd}};

// A row of values of every field, and one of nulls.
class two_rows final : public table_source {
public:
  two_rows() : table_source("two rows") { tables_ = {"two rows"}; }
  const std::vector<table_field>& fields(std::size_t) override { return ::fields; }
  std::unique_ptr<row_cursor> rows(std::size_t, std::vector<row_filter> filters) override {
    return std::make_unique<cursor>(std::move(filters));
  }

private:
  class cursor final : public row_cursor {
  public:
    using row_cursor::row_cursor;
    table_value value(std::size_t field) override {
      const field_type type = ::fields[field].type;
      if (at_ == 2) return {};
      if (is_date_or_time(type)) return table_value::of_date_time(36527.125);
      return is_number(type) ? table_value::of_number(1) : table_value::of_text("Weir 7");
    }

  private:
    bool advance() override { return ++at_ <= 2; }
    int at_ = 0;
  };
};

void run(const std::string& sql) {
  static two_rows source;
  static module_table table{.source = source, .table = 0, .fields = fields, .ignore_case = true};
  static sqlite3* const database = [] {
    sqlite3* opened = nullptr;
    fuzz::demand(sqlite3_open(":memory:", &opened) == SQLITE_OK, "SQLite cannot be started");
    attach_table(opened, "source", table);
    return opened;
  }();
  sqlite3_stmt* statement = nullptr;
  const char* behind = nullptr;
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, &behind) != SQLITE_OK)
    fuzz::fail(std::string("SQLite does not accept it: ") + sqlite3_errmsg(database) + ": " + sql);
  fuzz::demand(behind == sql.data() + sql.size(), "the statement ends before its text does");
  fuzz::demand(sqlite3_stmt_readonly(statement), "the statement writes");
  int rows = 0, state;
  while ((state = sqlite3_step(statement)) == SQLITE_ROW) ++rows;
  const bool has_refused = std::exchange(table.failure, nullptr) != nullptr; // a text that is no moment
  fuzz::demand((has_refused || state == SQLITE_DONE) && rows <= 2, "the statement does not run");
  sqlite3_finalize(statement);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string statement(fuzz::as_text(bytes, size));
  try {
    const translated_statement translated = translate_statement(statement, fields, "source");
    fuzz::demand(!table_of_statement(statement).empty() || statement.find("''") != statement.npos ||
                     statement.find("[]") != statement.npos,
                 "the table has no name");
    run(translated.sql);
  } catch (const query_engine_exception&) {
  }
  try {
    table_of_statement(statement);
  } catch (const query_engine_exception&) {
  }
  return 0;
}
