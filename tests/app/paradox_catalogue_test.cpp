// The catalogue in Paradox tables: the same as in SQLite, wherever it is read.
#include "app/catalogue_source.h"
#include "memory_catalogue_store.h"
#include "paradox_writer.h"
#include "query/paradox_catalogue_store.h"
#include "query/sqlite_catalogue_store.h"
#include "run_program.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;

class ParadoxCatalogue : public testing::Test {
protected:
  // The sentence with which the folder's catalogue is refused, the folder itself left out.
  std::string failure() {
    try {
      source.get();
    } catch (const catalogue_exception& error) {
      std::string text = error.what();
      for (std::size_t at; (at = text.find(folder.path.string())) != text.npos;)
        text.erase(at, folder.path.string().size());
      return text;
    }
    return "none";
  }
  std::string first_name() { return source.get()->models.at(0).model_name; }

  temporary_folder folder;
  catalogue_source source{folder.path};
};

TEST_F(ParadoxCatalogue, EqualsTheBundledOneAndOpensTheSample) {
  sqlite_catalogue_store bundled(CATALOGUE_FILE);
  write_paradox_catalogue(bundled, folder.path);
  EXPECT_TRUE(*source.get() == *read_catalogue(bundled));
  ASSERT_FALSE(source.get()->models.at(1).constant_groups.empty());

  const std::string sample = folder.file("roanoke.vki");
  ASSERT_EQ(run_program("/usr/bin/env", {"python3", "-B", SAMPLE_FOLDER "/build.py", VKI, sample}).status, 0);
  const auto saved_with = [&](const fs::path& catalogue, const std::string& name) {
    const program_result result =
        run_program(VESK_RUN, {"--catalogue", catalogue.string(), "--engine", ENGINE, "--no-queries", sample, "--check",
                               "--export", folder.file(name + ".inp"), "--save", folder.file(name + ".vki")});
    EXPECT_EQ(result.err, "vesk-run: Validity check passed: " + sample + ": No problems were detected\n");
    EXPECT_EQ(result.status, 0);
    return folder.read(name + ".vki") + folder.read(name + ".inp");
  };
  const std::string saved = saved_with(folder.path, "paradox");
  EXPECT_GT(saved.size(), 100000U);
  EXPECT_TRUE(saved == saved_with(fs::path(CATALOGUE_FILE).parent_path(), "sqlite"));
}

TEST_F(ParadoxCatalogue, NamesMayHaveAnyCaseAndTextsAreUtf8) {
  auto river = small_catalogue();
  river.tables["Systems"].rows[0][2] = "Température, °C";
  write_paradox_catalogue(river, folder.path);
  EXPECT_EQ(source.get()->models.at(0).systems.at(1).description, "Température, °C");
  fs::rename(folder.path / "models.DB", folder.path / "MODELS.db");
  fs::rename(folder.path / "output_control.DB", folder.path / "Output_Control.Db");
  EXPECT_TRUE(*source.get() == *read_catalogue(river));
}

TEST_F(ParadoxCatalogue, IsReadAgainWhenATableHasChangedAndGivesWayToSqlite) {
  auto river = small_catalogue();
  write_paradox_catalogue(river, folder.path);
  const auto first = source.get();
  EXPECT_EQ(source.get(), first);
  river.tables["Systems"].rows[0][2] = "Renamed";
  write_paradox_catalogue(river, folder.path);
  fs::last_write_time(folder.path / "Systems.DB", fs::file_time_type::clock::now() + std::chrono::seconds(2));
  EXPECT_EQ(source.get()->models.at(0).systems.at(1).description, "Renamed");
  fs::copy(CATALOGUE_FILE, folder.path / "catalogue.sqlite");
  EXPECT_EQ(first_name(), "Dissolved oxygen");
  folder.write("catalogue.sqlite", "damaged");
  EXPECT_EQ(failure(), "Cannot read table models of catalogue /catalogue.sqlite: file is not a database.");
}

TEST_F(ParadoxCatalogue, WhatIsMissingIsNamed) {
  EXPECT_EQ(failure(),
            "Cannot open catalogue : the folder has neither catalogue.sqlite nor the Paradox table models.DB.");
  auto river = small_catalogue();
  write_paradox_catalogue(river, folder.path);
  paradox_writer systems({{"Model_id", paradox_writer::type::long_integer}});
  systems.save(folder.path / "Systems.DB");
  EXPECT_EQ(failure(), "Cannot read table Systems of catalogue /Systems.DB: the table has no column Model_system_id.");
  folder.write("Parameters.DB", "cut");
  EXPECT_EQ(failure(),
            "Cannot read table Parameters of catalogue /Parameters.DB: the file is too short for a Paradox table.");
  fs::copy(folder.path / "solution.db", folder.path / "SOLUTION.DB");
  EXPECT_EQ(failure(),
            "Cannot read table solution of catalogue : the folder has two such files, SOLUTION.DB and solution.db.");
  fs::remove(folder.path / "models.DB");
  EXPECT_EQ(failure(), "Cannot read table models of catalogue : there is no file models.DB.");
}

} // namespace
} // namespace vesk
