#include "query/sqlite_catalogue_store.h"

#include "query/sqlite_names.h"

#include <sqlite3.h>

namespace vesk {

namespace {

// `content`: of the column, in the form in which its size is requested; null when it is empty.
std::string bytes_of(const void* content, sqlite3_stmt* statement, int column) {
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return content ? std::string(static_cast<const char*>(content), size) : std::string();
}

catalogue_value value_of(sqlite3_stmt* statement, int column) {
  switch (sqlite3_column_type(statement, column)) {
  case SQLITE_NULL: return {};
  case SQLITE_INTEGER: return static_cast<std::int64_t>(sqlite3_column_int64(statement, column));
  case SQLITE_FLOAT: return sqlite3_column_double(statement, column);
  case SQLITE_BLOB: return bytes_of(sqlite3_column_blob(statement, column), statement, column);
  // A text in UTF-8; SQLite converts from the database's encoding.
  default: return bytes_of(sqlite3_column_text(statement, column), statement, column);
  }
}

} // namespace

sqlite_catalogue_store::sqlite_catalogue_store(const std::filesystem::path& file) : file_(file) {
  if (sqlite3_open_v2(file.c_str(), &database_, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    const std::string cause = database_ ? sqlite3_errmsg(database_) : "out of memory";
    sqlite3_close(database_);
    throw catalogue_exception("Cannot open catalogue " + file.string() + ": " + cause + ".");
  }
}

sqlite_catalogue_store::~sqlite_catalogue_store() {
  sqlite3_close(database_);
}

std::vector<catalogue_row> sqlite_catalogue_store::read(std::string_view table,
                                                        const std::vector<std::string_view>& columns) {
  std::string sql = "SELECT ";
  for (std::size_t i = 0; i < columns.size(); ++i)
    // Named through its table: a quoted name alone would read as a text where the column is missing.
    sql += (i ? ", t." : "t.") + sql_quoted(columns[i]);
  sql += " FROM " + sql_quoted(table) + " AS t NOT INDEXED"; // an index would change the order

  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) fail(table);
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(raw, sqlite3_finalize);

  std::vector<catalogue_row> rows;
  int state;
  while ((state = sqlite3_step(raw)) == SQLITE_ROW) {
    catalogue_row& row = rows.emplace_back();
    for (std::size_t i = 0; i < columns.size(); ++i) row.push_back(value_of(raw, static_cast<int>(i)));
  }
  if (state != SQLITE_DONE) fail(table);
  return rows;
}

void sqlite_catalogue_store::fail(std::string_view table) const {
  throw catalogue_exception("Cannot read table " + std::string(table) + " of catalogue " + file_.string() + ": " +
                            sqlite3_errmsg(database_) + ".");
}

} // namespace vesk
