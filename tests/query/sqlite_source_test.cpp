// SQLite databases as sources: types where the database has none.
#include "query/sources/open_table_source.h"
#include "sqlite_file.h"
#include "table_summary.h"
#include "temporary_folder.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sqlite3.h>
#include <unistd.h>

namespace vesk {

namespace {

using testing::ElementsAre;

// A database under a name that Paradox tables have too.
std::string database(const temporary_folder& folder, const char* sql) {
  return write_sqlite(folder.file("river.db"), sql);
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
                          "2; 2011-01-31; 2011-02-01; x; 2; 0", "3; 2011-01-31 06:00:00; NULL; NULL; NULL; yes",
                          "4; soon; 2011-02-02 12:00:00; NULL; 3; NULL"));
  EXPECT_THAT(print(*source, 1), ElementsAre("id:25", "1"));
}

TEST(SqliteSource, NamesNeedNotBeUtf8) {
  const temporary_folder folder;
  const auto source = open_table_source(database(
      folder, "CREATE TABLE \"T\xb0\"(\"\xb0\x43\" TEXT, \"\" REAL); INSERT INTO \"T\xb0\" VALUES ('x', 1), ('y', 2)"));
  EXPECT_THAT(source->tables(), ElementsAre("T°"));
  EXPECT_THAT(print(*source), ElementsAre("°C:1; F2:6", "x; 1", "y; 2"));
  EXPECT_TRUE(source->rows(0, {{.field = 0, .text = "y"}})->next());
}

// A copy of a table declares its dates as numbers.
TEST(SqliteSource, FindsDatesAndTextsAmongNumbers) {
  const temporary_folder folder;
  const auto source = open_table_source(
      database(folder, "CREATE TABLE gauge(sampled DATETIME, flow REAL, depth NUMERIC, note TEXT);"
                       "INSERT INTO gauge VALUES ('2011-01-31 06:00', 'dry', '1/2/2011', CAST(x'35b0' AS TEXT)),"
                       "('2011-02-01', 'NA', 2, NULL); CREATE TABLE copy AS SELECT * FROM gauge"));
  EXPECT_THAT(print(*source, 1), ElementsAre("sampled:11; flow:6; depth:6; note:1",
                                             "2011-01-31 06:00:00; dry; 1/2/2011; 5°", "2011-02-01; NULL; 2; NULL"));
}

TEST(SqliteSource, LetsItsFileGoAndOpensItAgain) {
  const temporary_folder folder;
  const std::string file = database(folder, "CREATE TABLE gauge(id); INSERT INTO gauge VALUES (1), (2)");
  const auto source = open_table_source(file);
  const auto rows = source->rows(0);
  EXPECT_TRUE(rows->next());
  source->let_go();
  EXPECT_TRUE(rows->next()); // a cursor that is open still serves
  EXPECT_FALSE(rows->next());
  EXPECT_THAT(print(*source), ElementsAre("id:25", "1", "2"));
}

// Works as an ordinary user, to whom permissions apply.
class ordinary_user {
public:
  ordinary_user() { was_root_ = geteuid() == 0 && seteuid(65534) == 0; }
  ~ordinary_user() {
    if (was_root_ && seteuid(0) != 0) std::abort();
  }

private:
  bool was_root_ = false;
};

std::set<std::string> names_in(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

// A copy of a database with a write-ahead log, made while a program has it open, and with some of the files beside it.
class DatabaseWithLog : public testing::Test {
protected:
  DatabaseWithLog() {
    sqlite3* db = nullptr;
    sqlite3_open(origin.file("river.db").c_str(), &db);
    const char* const sql = "PRAGMA journal_mode = WAL; CREATE TABLE gauge(id); INSERT INTO gauge VALUES (7);"
                            "PRAGMA wal_checkpoint; INSERT INTO gauge VALUES (8)";
    EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    for (const char* end : {"", "-wal", "-shm"}) copies[end] = origin.read("river.db" + std::string(end));
    sqlite3_close(db);
  }

  // The rows, read where files can be made beside the database and where they cannot.
  std::vector<std::string> read(const std::vector<std::string>& ends) {
    std::vector<std::string> lines;
    for (const bool is_writable : {true, false}) {
      const temporary_folder folder;
      using std::filesystem::perms;
      for (const std::string& end : ends) {
        folder.write("river.db" + end, copies[end]);
        std::filesystem::permissions(folder.file("river.db" + end), perms(0444));
      }
      const auto before = names_in(folder.path);
      std::filesystem::permissions(folder.path, perms(is_writable ? 0777 : 0555));
      {
        const ordinary_user user;
        const auto source = open_table_source(folder.file("river.db"));
        for (const std::string& line : print(*source)) lines.push_back(line);
      }
      EXPECT_EQ(names_in(folder.path), before);
      for (const std::string& end : ends) EXPECT_EQ(folder.read("river.db" + end), copies[end]) << end;
      std::filesystem::permissions(folder.path, perms::owner_all);
    }
    return lines;
  }

  const temporary_folder origin;
  std::map<std::string, std::string> copies;
};

TEST_F(DatabaseWithLog, IsReadWithItsLogAndLeftAsItWas) {
  EXPECT_THAT(read({""}), ElementsAre("id:25", "7", "id:25", "7"));
  EXPECT_THAT(read({"", "-shm"}), ElementsAre("id:25", "7", "id:25", "7"));
  EXPECT_THAT(read({"", "-wal"}), ElementsAre("id:25", "7", "8", "id:25", "7", "8"));
  copies["-wal"].clear();
  EXPECT_THAT(read({"", "-wal"}), ElementsAre("id:25", "7", "id:25", "7"));
}

// Another program has it open.
TEST(SqliteSource, SeesWhatAnotherProgramHasWrittenToTheLog) {
  const temporary_folder folder;
  sqlite3* db = nullptr;
  sqlite3_open(folder.file("river.db").c_str(), &db);
  sqlite3_exec(db, "PRAGMA journal_mode = WAL; CREATE TABLE gauge(id); INSERT INTO gauge VALUES (7)", nullptr, nullptr,
               nullptr);
  EXPECT_THAT(print(*open_table_source(folder.file("river.db"))), ElementsAre("id:25", "7"));
  sqlite3_close(db);
}

// The change is undone by the next program that may write.
TEST(SqliteSource, RefusesAnIncompleteChange) {
  const temporary_folder folder;
  sqlite3* db = nullptr;
  sqlite3_open(folder.file("river.db").c_str(), &db);
  sqlite3_exec(db,
               "CREATE TABLE gauge(id); INSERT INTO gauge VALUES (1); PRAGMA cache_size = 2; BEGIN;"
               "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 20000) INSERT INTO gauge SELECT i "
               "FROM n",
               nullptr, nullptr, nullptr);
  for (const char* end : {"", "-journal"})
    folder.write("copy.db" + std::string(end), folder.read("river.db" + std::string(end)));
  sqlite3_close(db);
  EXPECT_THAT([&] { open_table_source(folder.file("copy.db")); },
              testing::ThrowsMessage<table_source_exception>(
                  folder.file("copy.db") +
                  ": a change to the database was not completed, as after a crash; open it once "
                  "with a program that may write to it."));
}

// A page is 4,096 bytes; the library reads the rest of one that has been cut as zeros.
TEST(SqliteSource, NeverReadsAPartOfADatabase) {
  const temporary_folder folder;
  database(folder, "CREATE TABLE gauge(id); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 5000) "
                   "INSERT INTO gauge SELECT i FROM n");
  const std::string bytes = folder.read("river.db"), cut = folder.file("cut.sqlite");
  for (const std::size_t missing : {1, 100, 4096}) {
    folder.write("cut.sqlite", bytes.substr(0, bytes.size() - missing));
    EXPECT_THAT([&] { print(*open_table_source(cut)); }, testing::Throws<table_source_exception>()) << missing;
  }
  folder.write("cut.sqlite", bytes.substr(0, bytes.size() - 1));
  EXPECT_THAT([&] { open_table_source(cut); },
              testing::ThrowsMessage<table_source_exception>(
                  cut + ": the database is truncated: its header states " + std::to_string(bytes.size() / 4096) +
                  " pages of 4096 bytes, but the file has only " + std::to_string(bytes.size() - 1) + " bytes."));
}

// What the database leaves out by itself is only what the filter would leave out: no text that may be another date.
TEST(SqliteSource, FiltersKeepEveryFormOfAValue) {
  const temporary_folder folder;
  const auto source = open_table_source(database(
      folder, "CREATE TABLE gauge(site TEXT, bare, sampled DATETIME);"
              "INSERT INTO gauge VALUES ('Oak', 5, '2005-1-5'), ('oak', '5', '2005/12/31 23:00'),"
              "('OAK''s', 'x', '2004-12-31 24:00'), (7, 5.5, 1104537600), ('', NULL, 2453371.5),"
              "(NULL, '5', '2004-12-31 23:59'), ('7', '05', '2006-01-01'), ('Oak', 5, NULL), ('soon', 1, 'soon'),"
              "('US', 1, '12/31/2005'), ('late', 1, '5/1/2099'), (x'4f616b', x'35', NULL)"));
  const auto kept = [&](const std::vector<row_filter>& filters) {
    std::string shown;
    for (const auto rows = source->rows(0, filters); rows->next();) {
      const table_value site = rows->value(0), bare = rows->value(1);
      shown += std::string(site.is_null() ? "NULL" : site.text()) + ":" +
               std::string(bare.is_null() ? "NULL" : bare.text()) + " ";
    }
    return shown;
  };
  const auto text = [](std::size_t field, const char* value, bool ignore_case) {
    return row_filter{.field = field, .text = value, .ignore_case = ignore_case};
  };
  EXPECT_EQ(kept({text(0, "Oak", false)}), "Oak:5 Oak:5 ");
  EXPECT_EQ(kept({text(0, "oAK", true)}), "Oak:5 oak:5 Oak:5 ");
  EXPECT_EQ(kept({text(0, "OAK's", false)}), "OAK's:x ");
  EXPECT_EQ(kept({text(0, "7", false)}), "7:5.5 7:05 ");
  EXPECT_EQ(kept({text(1, "5", false), text(0, "oak", false)}), "oak:5 ");
  EXPECT_EQ(kept({text(1, "5", false)}), "Oak:5 oak:5 NULL:5 Oak:5 ");
  const row_filter from{.field = 2, .kind = row_filter::test::at_least, .number = 38353}; // 1 January 2005
  const row_filter to{.field = 2, .kind = row_filter::test::at_most, .number = 38717.99};
  EXPECT_EQ(kept({from}),
            "Oak:5 oak:5 OAK's:x 7:5.5 NULL:NULL 7:05 soon:1 US:1 late:1 "); // the last has a text for a date
  EXPECT_EQ(kept({from, to}), "Oak:5 oak:5 OAK's:x 7:5.5 NULL:NULL soon:1 US:1 late:1 ");
  EXPECT_EQ(kept({to}), "Oak:5 oak:5 OAK's:x 7:5.5 NULL:NULL NULL:5 soon:1 US:1 late:1 ");
}

TEST(SqliteSource, ReportsFaults) {
  const temporary_folder folder;
  const std::string file = database(folder, "CREATE TABLE gauge(id); CREATE VIEW lost AS SELECT * FROM nowhere");
  const auto source = open_table_source(file);
  EXPECT_THAT([&] { source->find_table("gauges"); },
              testing::ThrowsMessage<table_source_exception>(file + ", table gauges: the file has no such table."));
  EXPECT_THAT([&] { source->fields(1); },
              testing::ThrowsMessage<table_source_exception>(file + ", table lost: no such table: main.nowhere."));
  folder.write("cut.sqlite", folder.read("river.db").substr(0, 600));
  EXPECT_THAT([&] { open_table_source(folder.file("cut.sqlite")); },
              testing::ThrowsMessage<table_source_exception>(folder.file("cut.sqlite") +
                                                             ": database disk image is malformed."));
  const temporary_folder other;
  const std::string bare = database(other, "CREATE TABLE gauge(id); DROP TABLE gauge");
  EXPECT_THAT([&] { open_table_source(bare); },
              testing::ThrowsMessage<table_source_exception>(bare + ": the database has no tables."));
}

} // namespace

} // namespace vesk
