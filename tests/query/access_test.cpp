// Access databases and the helper program that reads them: what is in them, and how the helper's failures are told.
#include "platform/program_output.h"
#include "query/sources/open_table_source.h"
#include "table_summary.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {

namespace {

class Access : public testing::Test {
protected:
  Access() { use_helper(VESK_MDB_HELPER); }

  static void use_helper(const std::string& program) { setenv("VESK_MDB", program.c_str(), 1); }

  // A helper that does what a shell line says.
  void use_script(const std::string& line) {
    folder_.write("helper", "#!/bin/sh\n" + line + "\n");
    std::filesystem::permissions(folder_.path / "helper", std::filesystem::perms::owner_all);
    use_helper(folder_.file("helper"));
  }

  // What opening the database and reading its first table fails with, without the file's name.
  std::string failure(const std::string& file = database) {
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

TEST_F(Access, TellsHowTheHelperFailed) {
  use_helper("/nowhere/vesk-mdb");
  EXPECT_EQ(failure(),
            ": the program that reads Access databases cannot be started: /nowhere/vesk-mdb: No such file or "
            "directory.");
  use_script("kill -SEGV $$");
  EXPECT_EQ(failure(), ": reading it failed with signal 11: the database is damaged.");
  use_script("exit 3");
  EXPECT_EQ(failure(), ": reading it failed with status 3: the database is damaged.");
  use_script("yes");
  EXPECT_EQ(failure(), ": the answer of vesk-mdb is damaged.");
  use_script(
      "printf '\\001\\000\\000\\000TA\\000\\000\\000\\000.'; [ $1 = tables ] || printf '\\003\\000\\000\\000Eno.'");
  EXPECT_EQ(failure(), ", table A: no.");
}

TEST_F(Access, RefusesDamagedDatabases) {
  std::string bytes = temporary_folder().read(database);
  folder_.write("cut.mdb", bytes.substr(0, 5000));
  EXPECT_EQ(failure(folder_.file("cut.mdb")),
            ": the database has been cut: its 5000 bytes are no whole number of pages.");
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
  EXPECT_EQ(failure(file), ", table Table1: the database has been cut: the table owns the page at byte 67584, but the "
                           "file has only 67584 bytes.");
}

TEST_F(Access, KillsAHelperThatIsSilent) {
  const auto start = std::chrono::steady_clock::now();
  const program_end end = read_program("/bin/sh", {"-c", "echo a; exec sleep 60"}, std::chrono::milliseconds(200),
                                       [](std::string_view piece) { return piece == "a\n"; });
  EXPECT_EQ(end.how, program_end::way::silent);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

} // namespace

} // namespace vesk
