// SQLite databases as sources: types where the database has none.
#include "query/sources/open_table_source.h"
#include "table_summary.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace vesk {

namespace {

using testing::ElementsAre;

// A database under a name that Paradox tables have too.
std::string database(const temporary_folder& folder, const char* sql) {
  sqlite3* db = nullptr;
  const std::string file = folder.file("river.db");
  sqlite3_open(file.c_str(), &db);
  EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  sqlite3_close(db);
  return file;
}

TEST(SqliteSource, SettlesTypesByDeclarationAndContent) {
  const temporary_folder folder;
  const std::string file = database(
      folder,
      "CREATE TABLE gauge(id INTEGER PRIMARY KEY, \"a\"\"b\" DATETIME, noted TEXT, mixed TEXT, bare, ok BOOLEAN);"
      "INSERT INTO gauge VALUES (1, '2011-01-31 06:00', '2011-01-31', '2011-01-31', 1.5, 1),"
      "(2, 40574.0 + 2415018.5, '2011-02-01', 'x', 2, 0), (3, 1296453600, NULL, '', NULL, 'yes'),"
      "(4, 'soon', '2011-02-02T12:00:00', NULL, 3, NULL);"
      "CREATE VIEW best AS SELECT id FROM gauge WHERE ok");
  EXPECT_TRUE(has_several_tables(file));
  const auto source = open_table_source(file);
  EXPECT_THAT(source->tables(), ElementsAre("gauge", "best"));
  EXPECT_EQ(source->find_table("'Best$'"), 1U);
  EXPECT_THAT(print(*source),
              ElementsAre("id:25; a\"b:11; noted:11; mixed:1; bare:6; ok:5",
                          "1; 2011-01-31 06:00:00; 2011-01-31; 2011-01-31; 1.5; 1",
                          "2; 2011-01-31; 2011-02-01; x; 2; 0", "3; 2011-01-31 06:00:00; NULL; NULL; NULL; NULL",
                          "4; NULL; 2011-02-02 12:00:00; NULL; 3; NULL"));
  EXPECT_THAT(print(*source, 1), ElementsAre("id:25", "1"));
}

TEST(SqliteSource, TellsWhatIsWrong) {
  const temporary_folder folder;
  const std::string file = database(folder, "CREATE TABLE gauge(id); CREATE VIEW lost AS SELECT * FROM nowhere");
  const auto source = open_table_source(file);
  EXPECT_THAT([&] { source->find_table("gauges"); }, testing::ThrowsMessage<table_source_exception>(
                                                         file + ", table gauges: there is no such table in the file."));
  EXPECT_THAT([&] { source->fields(1); },
              testing::ThrowsMessage<table_source_exception>(file + ", table lost: no such table: main.nowhere."));
  folder.write("cut.sqlite", folder.read("river.db").substr(0, 600));
  EXPECT_THAT([&] { open_table_source(folder.file("cut.sqlite")); },
              testing::ThrowsMessage<table_source_exception>(folder.file("cut.sqlite") +
                                                             ": database disk image is malformed."));
}

} // namespace

} // namespace vesk
