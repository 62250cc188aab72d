// Access databases and the helper program that reads them: their content, and the messages for the helper's failures.
#include "platform/program_output.h"
#include "query/sources/open_table_source.h"
#include "run_program.h"
#include "table_summary.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace vesk {

namespace {

class Access : public testing::Test {
protected:
  // Replaces the helper of a copy of the program by a shell line.
  void use_script(const std::string& line) {
    folder_.write("vesk-mdb", "#!/bin/sh\n" + line + "\n");
    std::filesystem::permissions(folder_.path / "vesk-mdb", std::filesystem::perms::owner_all);
  }

  // What a copy of the program says to the database, without the database's name.
  std::string outcome() {
    const std::string copy = folder_.file("open_table");
    if (!std::filesystem::exists(copy)) std::filesystem::copy_file(OPEN_TABLE, copy);
    std::string line = run_program(copy, {database}).out;
    if (line.starts_with(database)) line.erase(0, std::strlen(database));
    return line.substr(0, line.find('\n'));
  }

  // What opening the database and reading its first table fails with, without the file's name.
  static std::string failure(const std::string& file) {
    try {
      open_table_source(file)->fields(0);
    } catch (const table_source_exception& error) {
      return std::string(error.what()).substr(file.size());
    }
    return "read";
  }

  static constexpr const char* database = VESK_TEST_DATA "/tables/compIndexTestV1997.mdb";
  temporary_folder folder_;
};

TEST_F(Access, ReadsTheTablesOfADatabase) {
  EXPECT_TRUE(has_several_tables(database));
  const auto source = open_table_source(database);
  EXPECT_THAT(source->tables(), testing::ElementsAre("Table1"));
  EXPECT_THAT(summary(*source, source->find_table("table1")),
              testing::IsSupersetOf({"rows 512", "first 19; abc; def", "RS_AGENTE:1 n=512, 1 distinct",
                                     "CD_AGENTE:3 n=510 min=19 max=4813 mean=3065.600000"}));
}

TEST_F(Access, ReportsHowTheHelperFailed) {
  const std::string installed = (folder_.path.parent_path() / "lib/vesk/vesk-mdb").string();
  EXPECT_EQ(outcome(),
            ": cannot start the program that reads Access databases: " + installed + ": No such file or directory.");
  use_script("kill -SEGV $$");
  EXPECT_EQ(outcome(), ": reading failed with signal 11: the database is damaged.");
  use_script("exit 3");
  EXPECT_EQ(outcome(), ": reading failed with status 3: the database is damaged.");
  use_script("yes");
  EXPECT_EQ(outcome(), ": vesk-mdb sent a damaged answer.");
  use_script(
      "printf '\\001\\000\\000\\000TA\\000\\000\\000\\000.'; [ $1 = tables ] || printf '\\003\\000\\000\\000Eno.'");
  EXPECT_EQ(outcome(), ", table A: no.");
}

// The environment of this process names a library to load, and one of its files is open.
TEST_F(Access, TheHelperGetsTheOpenDatabaseAndNothingElse) {
  const file_descriptor open_here(fcntl(STDIN_FILENO, F_DUPFD, 40)); // inherited by the program, not by its helper
  setenv("LD_DEBUG", "unused", 1);
  use_script("exec 9>\"${0%/*}/told\"; cat /proc/$$/environ >&9; echo \"$@\" >&9; head -c 19 <&3 | tail -c 15 >&9; "
             "for f in /proc/$$/fd/*; do printf ' %s' ${f##*/} >&9; done; exit 3");
  outcome();
  unsetenv("LD_DEBUG");
  EXPECT_EQ(folder_.read("told").substr(0, 22), "tables\nStandard Jet DB");
  EXPECT_THAT(folder_.read("told").substr(22), testing::StartsWith(" 0 1 "));
  EXPECT_THAT(folder_.read("told").substr(22), testing::Not(testing::HasSubstr(" 40")));
}

TEST_F(Access, RefusesDamagedDatabases) {
  std::string bytes = temporary_folder().read(database);
  folder_.write("cut.mdb", bytes.substr(0, 5000));
  EXPECT_EQ(failure(folder_.file("cut.mdb")),
            ": the database is truncated: its size of 5000 bytes is not a whole number of pages.");
  folder_.write("page.mdb", bytes.substr(0, 2048));
  EXPECT_NE(failure(folder_.file("page.mdb")), "read");
}

// A page is 2,048 bytes; those of the table's rows are not the last ones.
TEST_F(Access, NeverReadsAPartOfATable) {
  const std::string bytes = temporary_folder().read(database);
  const std::string file = folder_.file("cut.mdb");
  std::size_t whole = 0, refused = 0;
  for (std::size_t pages = 1; pages <= bytes.size() / 2048; ++pages) {
    folder_.write("cut.mdb", bytes.substr(0, pages * 2048));
    try {
      EXPECT_EQ(summary(*open_table_source(file), 0).at(0), "rows 512") << pages;
      ++whole;
    } catch (const table_source_exception&) {
      ++refused;
    }
  }
  EXPECT_GT(whole, 1U);
  EXPECT_GT(refused, 20U);
  folder_.write("cut.mdb", bytes.substr(0, 33 * 2048));
  EXPECT_EQ(failure(file), ", table Table1: the database is truncated: the table uses the page at byte 67584, but the "
                           "file has only 67584 bytes.");
}

TEST_F(Access, KillsAHelperThatIsSilent) {
  const auto start = std::chrono::steady_clock::now();
  const program_end end = read_program("/bin/sh", {"-c", "echo a; exec sleep 60"}, open_for_reading("/dev/null"),
                                       std::chrono::milliseconds(200),
                                       [](std::string_view piece) { return piece.empty() || piece == "a\n"; });
  EXPECT_EQ(end.how, program_end::way::silent);
  const program_end stopped = // asked while the program is silent
      read_program("/bin/sh", {"-c", "echo a; exec sleep 60"}, open_for_reading("/dev/null"), std::chrono::minutes(1),
                   [](std::string_view piece) { return !piece.empty(); });
  EXPECT_EQ(stopped.how, program_end::way::stopped);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

} // namespace

} // namespace vesk
