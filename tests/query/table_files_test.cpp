// Files of other programs: each gives the values that other readers of its format found in it.
#include "query/sources/open_table_source.h"
#include "table_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace vesk {

namespace {

struct known_table {
  const char* file;
  const char* table; // nullptr: the file is one table
  std::vector<std::string> lines;
};

std::ostream& operator<<(std::ostream& out, const known_table& row) {
  return out << row.file;
}

class TableFiles : public testing::TestWithParam<known_table> {};

std::string test_file(const std::string& name) {
  return VESK_TEST_DATA "/tables/" + name;
}

TEST_P(TableFiles, HoldWhatOtherReadersFound) {
  const known_table& known = GetParam();
  const auto source = open_table_source(test_file(known.file));
  ASSERT_FALSE(source->tables().empty());
  const std::size_t table = known.table ? source->find_table(known.table) : 0;
  if (!known.table) {
    EXPECT_THAT(source->tables(), testing::ElementsAre(test_file(known.file)));
  }
  EXPECT_EQ(has_several_tables(test_file(known.file)), known.table != nullptr);
  EXPECT_THAT(summary(*source, table), testing::IsSupersetOf(known.lines));
}

std::string test_name(const testing::TestParamInfo<known_table>& info) {
  std::string name = info.param.file + std::string(info.param.table ? std::string("_") + info.param.table : "");
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name;
}

// The river, in every format: two stations by the day. Flow and conductance are whole numbers where the format has no
// types.
std::vector<std::string> roanoke(const std::string& whole_type = "6") {
  return {
      "rows 3650",
      "first 02080500; 2007-10-01; 2210; 3.22; NULL; NULL; NULL",
      "SITE_NO:1 n=3650, 2 distinct",
      "SAMPLED:9 n=3650 2007-10-01 .. 2012-09-30",
      "FLOW_CFS:" + whole_type + " n=1827 min=1510 max=20900 mean=6048.790367",
      "GAGE_FT:6 n=3637 min=2.54 max=20.73 mean=6.517613",
      "TEMP_C:6 n=1813 min=2.9 max=31.6 mean=17.941037",
      "SPCOND_US:" + whole_type + " n=1657 min=72 max=156 mean=122.019916",
      "DO_MGL:6 n=1677 min=2.9 max=13.2 mean=8.769231",
  };
}

INSTANTIATE_TEST_SUITE_P(
    Dbase, TableFiles,
    testing::Values(known_table{"roanoke_daily.dbf", nullptr, roanoke()},
                    known_table{"cp1251.dbf",
                                nullptr,
                                {"rows 4", "first 1; амбулаторно-поликлиническое", "RN:2 n=4 min=1 max=4 mean=2.500000",
                                 "NAME:1 n=4, 4 distinct"}},
                    known_table{"csah.dbf",
                                nullptr,
                                {"rows 124", "HWY_:6 n=124 min=0 max=4576 mean=1950.048387", "ALT_HWY:1 all NULL",
                                 "HIGH:6 n=124 min=0 max=31.827 mean=9.159815",
                                 "first 54; 923; 3 43; 0; 6.03; 43; NULL; 3; 1"}},
                    known_table{"dbase_03.dbf",
                                nullptr,
                                {"rows 14", "Date_Visit:9 n=14 2005-07-12 .. 2005-07-12",
                                 "Max_PDOP:6 n=14 min=3 max=5.4 mean=4.100000", "Point_ID:1 n=14, 14 distinct",
                                 "Point_ID_1:3 n=14 min=401 max=436 mean=417.857143"}}, // the file has the name twice
                    known_table{"dbase_31.dbf",
                                nullptr,
                                {"rows 77", "first 1; Chai; 1; 1; 10 boxes x 20 bags; 18; 39; 0; 10; 0",
                                 "SUPPLIERID:3 n=77 min=1 max=29 mean=13.649351",
                                 "UNITSINSTO:3 n=77 min=0 max=125 mean=40.506494"}},
                    known_table{"dbase_83.dbf",
                                nullptr,
                                {"rows 67", "ID:6 n=67 min=26 max=94 mean=59.402985", "DESC:16 n=67, 67 distinct"}},
                    known_table{"dbase_8b.dbf",
                                nullptr,
                                {"rows 10", "first One; 1; 1970-01-01; 1; 1.23456789012346; First memo\r\n",
                                 "DATE:9 n=8 1900-01-01 .. 1999-12-31", "FLOAT:6 n=9 min=0.1 max=8 mean=4.037174"}}),
    test_name);

INSTANTIATE_TEST_SUITE_P(
    Csv, TableFiles,
    testing::Values(known_table{"roanoke_daily.csv", nullptr, roanoke("3")},
                    known_table{"ChoptankRiverFlow.txt",
                                nullptr,
                                {"rows 4383", "first 1999-10-01; 3.029902561", "date:9 n=4383 1999-10-01 .. 2011-09-30",
                                 "Qdaily:6 n=4383 min=0.0099109 max=246.357 mean=4.593312"}},
                    known_table{"GAEPD_AllatoonaLake_nutrients_wide.csv",
                                nullptr,
                                {"rows 21", "Kjeldahl nitrogen:6 n=16 min=0.1 max=11.58 mean=1.923750",
                                 "Ammonia-nitrogen:6 n=8 min=0.04 max=0.37 mean=0.195000"}},
                    known_table{"dissolved_oxygen_raw.csv",
                                nullptr,
                                {"rows 359", "RFA(Sample Set ID)/Tag_id:1 n=359, 359 distinct",
                                 "Value:6 n=359 min=0.16 max=15.7 mean=6.670724",
                                 "End Time:10 n=359 08:30:00 .. 18:19:00"}}),
    test_name);

} // namespace

} // namespace vesk
