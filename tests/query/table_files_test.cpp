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

INSTANTIATE_TEST_SUITE_P(
    Paradox, TableFiles,
    testing::Values(
        known_table{"roanoke_daily.db", nullptr, roanoke()},
        known_table{"ORDERS.DB",
                    nullptr,
                    {"rows 224", "first 1001; 1221; 1988-04-03; 1988-04-05; UPS; 7320; 7320; 0; FOB; Credit; Apr",
                     "Order No:6 n=224 min=1001 max=1669 mean=1141.013393",
                     "Ship Date:9 n=224 1988-04-05 .. 1992-05-09", "Ship VIA:1 n=224, 5 distinct"}},
        known_table{"RENTAL.DB", // version 3.0
                    nullptr,
                    {"rows 198", "first 1989-01-01; 1332; B1406; The Blob; 1.5; Sci-Fi; San Bruno; 1989-01-09",
                     "Date Returned:9 n=126 1989-01-02 .. 1989-03-04",
                     "Rental Fee:7 n=198 min=1.5 max=3 mean=2.467172"}},
        known_table{"STORE.DB", nullptr, {"rows 4", "first A; Video Village; San Mateo; CA"}},
        known_table{"GENERAL.DB", nullptr, {"first 1; Mari; 100", "MONEYS:7 n=3 min=75 max=150 mean=108.333333"}},
        known_table{"ROMAN8.db", nullptr, {"rows 1", "A:1 n=1, 1 distinct"}},
        known_table{
            "bcd.db",
            nullptr,
            {"first 1.23; 1; 0.123", "A:8 n=3 min=-1.23 max=1.23 mean=0.000000", "B:8 n=2 min=-1 max=1 mean=0.000000"}},
        known_table{"date35.db", nullptr, {"DATE:9 n=3 2018-01-01 .. 2018-02-01"}},
        known_table{"date4.db", nullptr, {"DATE:9 n=3 2018-01-01 .. 2018-02-01"}},
        known_table{"date7.db",
                    nullptr,
                    {"rows 5", "first 2018-01-01; 10:00:00", "DATE:9 n=4 2018-01-01 .. 2018-02-01",
                     "TIME:10 n=4 09:25:25 .. 10:30:00"}},
        known_table{"fk4.db", nullptr, {"rows 2", "first 1; NULL; 1; NULL", "FK1:3 all NULL"}},
        known_table{"logical.db", nullptr, {"BOOL:5 n=4 min=0 max=1 mean=0.750000"}},
        known_table{"long.db",
                    nullptr,
                    {"rows 3", "Id:14 n=3 min=1 max=3 mean=2.000000", "LONG:3 n=2 min=1 max=2 mean=1.500000"}},
        known_table{"time.db", nullptr, {"rows 3", "first 01:00:01", "Time:10 n=2 01:00:01 .. 03:00:03"}},
        known_table{
            "timestamp.db", nullptr, {"rows 2", "Timestamp:11 n=1 2020-02-01 01:00:01 .. 2020-02-01 01:00:01"}}),
    test_name);

INSTANTIATE_TEST_SUITE_P(Sqlite, TableFiles,
                         testing::Values(known_table{"roanoke_daily.sqlite", "roanoke_daily", roanoke()}), test_name);

INSTANTIATE_TEST_SUITE_P(
    Xls, TableFiles,
    testing::Values(
        known_table{"roanoke_daily.xls", "daily", roanoke("3")},
        known_table{"any_sheets.xls",
                    "Visible",
                    {"F1:3 n=3 min=1 max=5 mean=3.000000, 1 texts among them", "F2:3 n=3 min=2 max=6 mean=4.000000"}},
        known_table{"any_sheets.xls", "veryhidden$", {"rows 0", "F1:1 all NULL"}},
        known_table{
            "date.xls", "Sheet1", {"rows 3", "first 2021-01-01; 15", "F1:11 n=3 1900-01-10 15:10:10 .. 2021-01-02"}},
        known_table{"date_1904.xls",
                    "Sheet1",
                    {"rows 3", "first 2021-01-01; 15", "F1:11 n=3 1904-01-11 15:10:10 .. 2021-01-02"}},
        known_table{"issues.xls", "issue2", {"rows 2", "first 2; b", "1:3 n=2 min=2 max=3 mean=2.500000"}},
        known_table{"issues.xls", "issue5", {"rows 1", "first 0.5"}},
        known_table{"merged_range.xls",
                    "Sheet1",
                    {"rows 2", "A1:1 n=2, 2 distinct", "H1:1 n=2, 2 distinct"}}), // D1 belongs to C1
    test_name);

INSTANTIATE_TEST_SUITE_P(
    Xlsx, TableFiles,
    testing::Values(
        known_table{"roanoke_daily.xlsx", "daily", roanoke("3")},
        known_table{"date.xlsx", "Sheet1", {"first 2021-01-01; 15", "F1:11 n=3 1900-01-10 15:10:10 .. 2021-01-02"}},
        known_table{
            "date_1904.xlsx", "Sheet1", {"first 2021-01-01; 15", "F1:11 n=3 1904-01-11 15:10:10 .. 2021-01-02"}},
        known_table{"date_iso.xlsx", "Sheet", {"rows 5", "first 1/1/2021 0:00:00"}},
        known_table{"errors.xlsx", "Feuil1", {"rows 6", "#DIV/0!:1 n=6, 6 distinct"}},
        known_table{"issues.xlsx", "spc_chrs", {"rows 7", "first <"}},
        known_table{"readings.xlsx",
                    "Sheet1",
                    {"rows 3", "first London; 15; 72; 1013", "Celsius:6 n=3 min=12 max=18.5 mean=15.166667"}},
        known_table{"temperature-fallible.xlsx", "Sheet1", {"rows 4", "first celsius; 22.2222; measured"}}),
    test_name);

INSTANTIATE_TEST_SUITE_P(
    Ods, TableFiles,
    testing::Values(
        known_table{"roanoke_daily.ods", "daily", roanoke("3")},
        known_table{"1996-2000.ods", "1996CR1", {"rows 35", "F17:6 n=34 min=-0.6 max=94.755 mean=75.430588"}},
        known_table{
            "date.ods", "Sheet1", {"rows 4", "first 2021-01-01; 15", "F1:11 n=4 10:10:10 .. 2021-01-01 10:10:10"}},
        known_table{"decimal_comma.ods", "Full1", {"A:6 n=1 min=3.4 max=3.4 mean=3.400000"}},
        known_table{"issues.ods", "issue5", {"first 0.5"}},
        known_table{"na_test.ods", "Sheet1", {"rows 5", "col2:3 n=5 min=1 max=999 mean=200.800000"}},
        known_table{"starwars.ods",
                    "Sheet2",
                    {"rows 10", "height:3 n=10 min=150 max=228 mean=182.800000", "hair_color:1 n=10, 6 distinct"}}),
    test_name);

// 555 bytes are in the memo file, the first 240 of them in the record too.
TEST(Paradox, ReadsAMemoWhole) {
  const auto source = open_table_source(test_file("memo.db"));
  const auto row = source->rows(0);
  ASSERT_TRUE(row->next());
  const table_value memo = row->value(1);
  ASSERT_EQ(memo.kind(), value_kind::text);
  EXPECT_EQ(memo.text().size(), 555U);
  EXPECT_TRUE(memo.text().starts_with("012345678900123456789001"));
  ASSERT_TRUE(row->next());
  EXPECT_EQ(row->value(1).text().size(), 12U);
  EXPECT_FALSE(row->next());
}

TEST(Paradox, RefusesAnEncryptedTable) {
  EXPECT_THAT([] { open_table_source(test_file("encrypted.db")); },
              testing::ThrowsMessage<table_source_exception>(test_file("encrypted.db") + ": the table is encrypted."));
}

} // namespace

} // namespace vesk
