#include "memory_catalogue_store.h"

#include "dataset/binary_reader.h"
#include "dataset/binary_writer.h"
#include "dataset/dataset.h"
#include "query/sqlite_catalogue_store.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace vesk {
namespace {

prevesk_dataset_data_type river() {
  auto store = small_catalogue();
  return prevesk_dataset_data_type(read_catalogue(store));
}

// The same data set before a catalogue in which something has changed.
prevesk_dataset_data_type merged(const prevesk_dataset_data_type& data, memory_catalogue_store store) {
  prevesk_dataset_data_type result(read_catalogue(store));
  result.segments = data.segments;
  result.parameters = data.parameters;
  result.systems = data.systems;
  result.constant_groups = data.constant_groups;
  result.time_functions = data.time_functions;
  result.output_controls = data.output_controls;
  result.refresh_from_catalogue(true);
  return result;
}

template <class List>
std::string numbers(const List& list) {
  std::string text;
  for (const auto& record : list) text += (text.empty() ? "" : " ") + std::to_string(record.isc);
  return text;
}

int shown(double value) {
  return static_cast<int>(value);
}
int shown(const segment_system_data_record_type::payload& p) {
  return static_cast<int>(p.initial_concentration);
}

template <class Items>
std::string print(const Items& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i)
    text += std::to_string(items[i].isc) + ":" + std::to_string(shown(items.values()[i])) + " ";
  return text;
}

// River with two segments and something of the user's in every list.
prevesk_dataset_data_type used_river() {
  prevesk_dataset_data_type data = river();
  data.resize_segments(2);
  for (std::size_t s = 0; s < 2; ++s)
    for (std::size_t i = 0; i < 2; ++i) {
      data.segments.edit(s).parameters.set(i, {data.parameters[i].isc, 10.0 * static_cast<double>(s + 1)});
      data.segments.edit(s).systems.set(i, {data.systems[i].isc, 7.0, 0.5});
    }
  data.parameters.edit(1).used = true;
  data.parameters.edit(1).scale = 3;
  data.systems.edit(0).cmax = 5;
  data.systems.edit(0).description = "typed";
  data.systems.edit(0).boundaries.resize(1);
  data.constant_groups.edit(0).constants.edit(1).value = 1.25; // 52, "Rate"
  data.constant_groups.edit(0).constants.edit(1).used = true;
  data.time_functions.edit(1).used = true;
  data.time_functions.edit(1).points = {{{1, 2}, 3}};
  data.time_functions.edit(1).query.edit().name = "gauge";
  data.time_functions.edit(1).interpolation_type = interpolation_step;
  data.output_controls.edit(0).enabled = false;
  data.output_controls.edit(0).csv_enabled = true;
  return data;
}

TEST(Catalogue, ANewDataSetIsForTheFirstModelWithAllItsListsInSortOrder) {
  const auto data = river();
  EXPECT_EQ(data.model_type, 7u);
  EXPECT_EQ(data.library + " " + data.model_name, "river.dll River");
  EXPECT_EQ(numbers(data.parameters), "11 12");
  EXPECT_EQ(data.parameters[1].maximum, 9.5);
  EXPECT_EQ(data.parameters[1].default_value, 2);
  EXPECT_EQ(numbers(data.systems), "21 22");
  EXPECT_EQ(data.systems[1].description, "Oxygen");
  EXPECT_EQ(numbers(data.time_functions), "31 32");
  ASSERT_EQ(data.constant_groups.size(), 2u);
  EXPECT_EQ(numbers(data.constant_groups[0].constants), "53 52");
  EXPECT_EQ(data.constant_groups[0].constants[1].group, 0);
  EXPECT_EQ(data.constant_groups[1].constants[0].group, 1);
  EXPECT_EQ(data.output_controls[0].csv_filename, "oxygen.csv");
  EXPECT_EQ(data.output_controls[0].short_description, "DO");
  EXPECT_EQ(data.solution_techniques[0].name, "Runge-Kutta"); // in the order of ID
  EXPECT_EQ(segment_data_type().segment_type, 5u);
  EXPECT_EQ(moment_type(), moment_type::from_date_time(data.start_date_time()));
}

TEST(Catalogue, AModelWithoutSegmentTypesLeavesTheDefaultTypeAndAChangeOfModelStartsAnew) {
  auto data = used_river();
  segment_data_type::default_segment_type = 77;
  data.model_type = 3;
  data.refresh_from_catalogue(false);
  EXPECT_EQ(segment_data_type().segment_type, 77u);
  EXPECT_EQ(data.model_name, "Lake");
  EXPECT_EQ(numbers(data.parameters), "11");
  EXPECT_EQ(data.parameters[0].description, "Depth");
  EXPECT_FALSE(data.parameters[0].used);
  for (const auto& segment : data.segments) {
    EXPECT_EQ(print(segment.parameters), "0:0 "); // as new, the number too
    EXPECT_EQ(segment.systems.size(), 0u);
  }
  EXPECT_TRUE(data.systems.empty() && data.constant_groups.empty() && data.time_functions.empty());
  EXPECT_TRUE(data.output_controls.empty());
}

TEST(Catalogue, AnUnknownModelHasNoListsEvenWithMerging) {
  auto data = used_river();
  data.model_type = 99;
  data.refresh_from_catalogue(true);
  EXPECT_EQ(data.library + " " + data.model_name, "UNKNOWN.DLL UNKNOWN MODEL");
  EXPECT_TRUE(data.parameters.empty() && data.systems.empty() && data.output_controls.empty());
  EXPECT_EQ(data.segments[1].parameters.size(), 0u);
}

TEST(Catalogue, MergingKeepsTheUsersValuesAndTakesTheRestFromTheCatalogue) {
  const auto before = used_river();
  auto store = small_catalogue();
  store.tables["Parameters"].rows[0] = {7, 12, -1.0, 8, 3, "Bed slope", 2};
  store.tables["output_control"].rows[0] = {7, 61, "Oxygen", "g", "O2", "o2.csv", 1};
  // Rate moves from the first group to the second.
  store.tables["Constants"].rows[1] = {42, 52, 0, 2, 1, "Rate", 2};
  const auto after = merged(before, store);
  EXPECT_EQ(after.parameters[1].description, "Bed slope");
  EXPECT_EQ(after.parameters[1].minimum, -1);
  EXPECT_TRUE(after.parameters[1].used);
  EXPECT_EQ(after.parameters[1].scale, 3);
  EXPECT_EQ(after.systems[0].description, "Nitrate");
  EXPECT_EQ(after.systems[0].cmax, 5);
  EXPECT_EQ(after.systems[0].boundaries.size(), 1u);
  EXPECT_EQ(after.time_functions[1], before.time_functions[1]);
  EXPECT_EQ(numbers(after.constant_groups[0].constants), "53");
  EXPECT_EQ(numbers(after.constant_groups[1].constants), "51 52");
  EXPECT_EQ(after.constant_groups[1].constants[1].value, 1.25);
  EXPECT_TRUE(after.constant_groups[1].constants[1].used);
  EXPECT_EQ(after.constant_groups[1].constants[1].group, 1);
  EXPECT_EQ(after.output_controls[0].csv_filename, "o2.csv");
  EXPECT_FALSE(after.output_controls[0].enabled);
  EXPECT_TRUE(after.output_controls[0].csv_enabled);
  EXPECT_EQ(after.segments, before.segments);
}

TEST(Catalogue, MergingFollowsNumbersWhenItemsComeGoAndChangePlaces) {
  const auto before = used_river();
  auto store = small_catalogue();
  auto& rows = store.tables["Parameters"].rows;
  rows.push_back({7, 13, 0, 1, 0, "New", 0}); // becomes the first
  auto after = merged(before, store);
  EXPECT_EQ(numbers(after.parameters), "13 11 12");
  EXPECT_FALSE(after.parameters[0].used);
  EXPECT_EQ(after.parameters[0].scale, 1.0);
  EXPECT_TRUE(after.parameters[2].used);
  EXPECT_EQ(print(after.segments[0].parameters), "0:0 11:10 12:10 ");
  EXPECT_EQ(print(after.segments[1].parameters), "0:0 11:20 12:20 ");

  rows.erase(rows.begin() + 1); // 11 is lost
  after = merged(before, store);
  EXPECT_EQ(numbers(after.parameters), "13 12");
  EXPECT_EQ(print(after.segments[1].parameters), "0:0 12:20 ");
  EXPECT_EQ(print(after.segments[1].systems), print(before.segments[1].systems));
}

TEST(Catalogue, OfSeveralOldItemsWithOneNumberTheLastWins) {
  auto before = used_river();
  before.parameters.edit(0).isc = 12; // now twice: scale 1 and scale 3
  before.parameters.push_back(before.parameters[1]);
  before.parameters.edit(2).scale = 4; // beyond the segments' lists
  const auto after = merged(before, small_catalogue());
  EXPECT_EQ(after.parameters[1].scale, 4);
  EXPECT_FALSE(after.parameters[0].used);
  EXPECT_EQ(print(after.segments[0].parameters), "0:0 12:10 "); // the last one within the old lists: position 1
}

// What reading reports as lost of `data`, saved with `model`, when the catalogue has become that of `store`.
reading_losses losses_of(prevesk_dataset_data_type data, std::uint32_t model, memory_catalogue_store store) {
  data.model_type = model;
  std::string bytes;
  binary_writer writer(bytes);
  data.write(writer);
  binary_reader reader(bytes, "river.vki");
  return prevesk_dataset_data_type(read_catalogue(store)).read(reader);
}

TEST(Catalogue, ReadingReportsWhatTheCatalogueNoLongerHas) {
  prevesk_dataset_data_type data = used_river();
  data.systems.edit(0).loads.resize(3);
  EXPECT_FALSE(losses_of(data, 7, small_catalogue()).any());

  const reading_losses all = losses_of(data, 99, small_catalogue());
  EXPECT_TRUE(all.model_is_unknown && all.any());
  EXPECT_EQ(in_words(all.dropped),
            "2 systems, 3 loads, 1 boundary, 2 parameters, 3 constants, 2 time functions, 1 output");
  const reading_losses nothing = losses_of(prevesk_dataset_data_type(), 0, small_catalogue());
  EXPECT_TRUE(nothing.model_is_unknown);
  EXPECT_FALSE(nothing.any());
  EXPECT_EQ(in_words(nothing.dropped), "");

  auto store = small_catalogue();
  store.tables["Systems"].rows[1][1] = 23;                          // another Nitrate
  store.tables["Constants"].rows[1] = {42, 52, 0, 2, 1, "Rate", 2}; // moved, not lost
  store.tables["output_control"].rows.clear();
  const reading_losses some = losses_of(data, 7, store);
  EXPECT_FALSE(some.model_is_unknown);
  EXPECT_EQ(some.names, (std::vector<std::string>{"system \"typed\"", "output \"Dissolved oxygen\""}));
  EXPECT_EQ(in_words(some.dropped), "1 system, 3 loads, 1 boundary, 1 output");
}

TEST(Catalogue, MoreSegmentsGetListsOfTheRightLengthAndTheOthersKeepTheirs) {
  auto data = used_river();
  const auto before = data;
  data.resize_segments(4);
  EXPECT_EQ(data.segments[1], before.segments[1]);
  EXPECT_EQ(print(data.segments[3].parameters), "0:0 0:0 ");
  EXPECT_EQ(data.segments[3].systems.size(), 2u);
  EXPECT_EQ(data.systems[0].cmax, 5);
  data.resize_segments(1);
  EXPECT_EQ(data.segments.size(), 1u);
}

std::string failure(const auto& act) {
  try {
    act();
  } catch (const catalogue_exception& error) {
    return error.what();
  }
  return "none";
}

TEST(Catalogue, ValuesOfTheWrongKindAreNamedByTableRowAndColumn) {
  auto store = small_catalogue();
  store.tables["Parameters"].rows[1][2] = "low";
  EXPECT_EQ(failure([&] { read_catalogue(store); }),
            "Catalogue table Parameters, row 2: column Minimum is not a number.");
  store = small_catalogue();
  store.tables["Systems"].rows[0][1] = -4;
  EXPECT_EQ(failure([&] { read_catalogue(store); }),
            "Catalogue table Systems, row 1: column Model_system_id is not a number of 0 or more.");
  store = small_catalogue();
  store.tables["Parameters"].rows[1][2] = std::monostate(); // null reads as 0
  EXPECT_EQ(read_catalogue(store)->find_model(7)->parameters[0].minimum, 0);
}

TEST(Catalogue, ASqliteFileIsReadOnlyAndWhatIsMissingInItIsNamed) {
  const std::filesystem::path file = std::filesystem::path(::testing::TempDir()) / "catalogue_test.sqlite";
  std::filesystem::remove(file);
  EXPECT_EQ(failure([&] { sqlite_catalogue_store store(file); }),
            "Cannot open catalogue " + file.string() + ": unable to open database file.");
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
  sqlite3_exec(database,
               "CREATE TABLE Models(model_id INTEGER, \"Default\" REAL, Library TEXT);"
               "INSERT INTO Models VALUES(2, 0.5, 'b.dll'), (1, NULL, 'a.dll')",
               nullptr, nullptr, nullptr);
  sqlite3_close(database);
  sqlite_catalogue_store store(file);
  const std::vector<catalogue_row> rows = store.read("models", {"Library", "Model_id", "Default"});
  EXPECT_EQ(rows, (std::vector<catalogue_row>{{"b.dll", 2, 0.5}, {"a.dll", 1, std::monostate()}}));
  EXPECT_EQ(failure([&] { store.read("models", {"Sort_key"}); }),
            "Cannot read table models of catalogue " + file.string() + ": no such column: t.Sort_key.");
  EXPECT_EQ(failure([&] { store.read("solution", {"ID"}); }),
            "Cannot read table solution of catalogue " + file.string() + ": no such table: solution.");
  std::filesystem::remove(file);
  std::ofstream(file) << "no database, but long enough to have a header if it were one";
  EXPECT_EQ(failure([&] { sqlite_catalogue_store(file).read("solution", {"ID"}); }),
            "Cannot read table solution of catalogue " + file.string() + ": file is not a database.");
  std::filesystem::remove(file);
}

TEST(Catalogue, ASqliteFileMayBeOfUtf16WithIndexesAndWithoutRowIds) {
  const std::filesystem::path file = std::filesystem::path(::testing::TempDir()) / "catalogue_utf16.sqlite";
  std::filesystem::remove(file);
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database,
                         "PRAGMA encoding = 'UTF-16';"
                         "CREATE TABLE models(Library TEXT, Model_id INTEGER); CREATE INDEX i ON models(Library);"
                         "INSERT INTO models VALUES('z\u00e4h.dll', 2), ('a.dll', 1);"
                         "CREATE TABLE solution(ID INTEGER PRIMARY KEY, Solution TEXT) WITHOUT ROWID;"
                         "INSERT INTO solution VALUES(2, 'Euler'), (1, X'ff00');"
                         "CREATE VIEW Systems AS SELECT Library FROM models",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(database);
  sqlite_catalogue_store store(file);
  EXPECT_EQ(store.read("models", {"Library"}), (std::vector<catalogue_row>{{"z\u00e4h.dll"}, {"a.dll"}}));
  EXPECT_EQ(store.read("solution", {"ID", "Solution"}),
            (std::vector<catalogue_row>{{1, std::string("\xff\0", 2)}, {2, "Euler"}}));
  EXPECT_EQ(store.read("Systems", {"Library"}).size(), 2u);
  std::filesystem::remove(file);
}

} // namespace
} // namespace vesk
