// SQLite databases that tests read.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <string>

namespace vesk {

// Executes `sql` on the database in `file`, which it makes if there is none. Returns the file's name.
inline std::string write_sqlite(const std::string& file, const std::string& sql) {
  sqlite3* database = nullptr;
  sqlite3_open(file.c_str(), &database);
  EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
  sqlite3_close(database);
  return file;
}

// A database with the view "flow" of the fields "day" and "value": its rows never come.
inline std::string write_endless_sqlite(const std::string& file) {
  return write_sqlite(file, "CREATE VIEW flow AS WITH RECURSIVE c(day) AS (SELECT 1 UNION ALL SELECT day FROM c) "
                            "SELECT day, day AS value FROM c WHERE day > 1");
}

} // namespace vesk
