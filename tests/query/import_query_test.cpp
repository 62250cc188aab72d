#include "paradox_writer.h"
#include "peak_memory.h"
#include "query/deferred_queries.h"
#include "query/import_query.h"
#include "query/shown_rows.h"
#include "sqlite_file.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <map>
#include <random>
#include <sqlite3.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;

const fs::path tables_folder = fs::path(VESK_TEST_DATA) / "tables";

// The run's period: 1 January 2009 to 31 December 2009.
prevesk_dataset_data_type model_of_2009() {
  prevesk_dataset_data_type model;
  model.seed_date = 39814;
  model.end_date = 40178;
  model.seed_time = model.end_time = 0;
  model.time_steps.points = {{moment_type::from_date_time(39814), 0.1}, {moment_type::from_date_time(40178), 0.1}};
  return model;
}

import_query_descriptor query_on(const std::string& file, const std::string& moment, const std::string& value) {
  import_query_descriptor query;
  query.file_name = file;
  query.date_time_field = moment;
  query.value_field = value;
  return query;
}

std::string failure_of(const import_query_descriptor& query, const fs::path& folder = tables_folder) {
  point_list points;
  try {
    import_query(query, folder).execute(model_of_2009(), points);
  } catch (const query_exception& error) {
    return error.what();
  }
  return "none";
}

class QueryFolder : public testing::Test {
protected:
  QueryFolder() { fs::current_path(folder.path); } // the trace goes to the current folder
  ~QueryFolder() override { fs::current_path(fs::temp_directory_path()); }

  void fill_database(const char* name, const std::string& sql) const { write_sqlite(folder.file(name), sql); }

  temporary_folder folder;
};

using ImportQuery = QueryFolder;

// The sample river's days in every format give the same series.
class FormatsOfOneTable : public QueryFolder, public testing::WithParamInterface<const char*> {};

TEST_P(FormatsOfOneTable, GiveTheSameSeries) {
  import_query_descriptor query = query_on(GetParam(), "SAMPLED", "DO_MGL");
  import_query with_tables(query, tables_folder);
  with_tables.set_file(GetParam());
  if (!with_tables.tables.empty()) query.table_name = with_tables.tables[0];
  query.conditions = {{"SITE_NO", 0, 0, "02081022"}};
  point_list points;
  import_query live(query, tables_folder);
  const query_report report = live.execute(model_of_2009(), points);
  EXPECT_EQ(report.rows, 364U);
  EXPECT_EQ(report.without_value, 35U);
  ASSERT_EQ(points.size(), 329U);
  double sum = 0;
  for (const auto& point : points) sum += point.value;
  EXPECT_NEAR(sum, 2908.6, 1e-6);
  EXPECT_EQ(date_time_text(points[0]), "1/1/2009 0:00:00");
  EXPECT_EQ(date_time_text(points[328]), "12/31/2009 0:00:00");
  live.refresh_values(0);
  EXPECT_EQ(live.choices[0].values, (std::vector<std::string>{"02080500", "02081022"}));
}

INSTANTIATE_TEST_SUITE_P(Files, FormatsOfOneTable,
                         testing::Values("roanoke_daily.dbf", "roanoke_daily.db", "roanoke_daily.csv",
                                         "roanoke_daily.sqlite", "roanoke_daily.xls", "roanoke_daily.xlsx",
                                         "roanoke_daily.ods"),
                         [](const auto& file) { return fs::path(file.param).extension().string().substr(1); });

TEST_F(ImportQuery, AveragesPointsOfOneDateAndTimeAndFillsAPeriod) {
  import_query_descriptor query = query_on("RENTAL.DB", "Date", "Rental Fee");
  query.restrict_to_run_period = false;
  query.conditions = {{"Category", 0, 0, "Classics"}};
  import_query live(query, tables_folder);
  point_list points = {{{0, 0}, 1}};
  const query_report report = live.execute(model_of_2009(), points);
  EXPECT_EQ(report.rows, 65U);
  EXPECT_EQ(report.points, 14U);
  EXPECT_EQ(points.size(), 14U); // the point that was there is replaced
  live.stored.average_duplicates = live.stored.replace_existing = false;
  live.execute(model_of_2009(), points);
  EXPECT_EQ(points.size(), 14U + 65U);
}

TEST_F(ImportQuery, OneBoundAloneSelectsItsRows) {
  folder.write("f.csv", "Taken,Flow\n2008-12-31,1\n2009-01-01,2\n2009-01-02,3\n2009-01-03,4\n");
  import_query_descriptor query = query_on("f.csv", "Taken", "Flow");
  prevesk_dataset_data_type without_steps = model_of_2009();
  without_steps.time_steps.points.clear();
  const auto rows = [&](unsigned comparison, bool run_period) {
    query.conditions = {{"Taken", 0, comparison, "1/2/2009"}};
    if (run_period) query.conditions.clear();
    query.restrict_to_run_period = run_period;
    point_list points;
    return import_query(query, folder.path).execute(without_steps, points).rows;
  };
  EXPECT_EQ(rows(1, false), 2U);
  EXPECT_EQ(rows(4, false), 2U);
  EXPECT_EQ(rows(4, true), 3U);
}

TEST_F(ImportQuery, BuildsTheTextThatIsShown) {
  import_query_descriptor query = query_on("ORDERS.DB", "Sale Date", "Total Invoice");
  query.conditions = {{"Ship VIA", 0, 0, "DHL"}, {"Sale Date", 0, 3, "3/24/1989"}, {"Order No", 1, 1, "1001"}};
  import_query live(query, tables_folder);
  live.validate();
  prevesk_dataset_data_type model = model_of_2009();
  model.seed_time = 0.125;
  EXPECT_EQ(live.build_sql(model),
            "SELECT * FROM 'ORDERS.DB' WHERE (Ship VIA='DHL' AND Sale Date>'3/24/1989' OR Order No<1001) AND "
            "(Sale Date>='1/1/2009, 3:00:00' AND Sale Date<='12/31/2009, 0:00:00') ORDER BY Sale Date");
  model.time_steps.points.clear();
  live.stored.conditions.clear();
  EXPECT_EQ(live.build_sql(model),
            "SELECT * FROM 'ORDERS.DB' WHERE (Sale Date>='1/1/2009, 3:00:00') ORDER BY Sale Date");

  import_query sheet(query_on("roanoke_daily.xlsx", "SAMPLED", "DO_MGL"), tables_folder);
  sheet.set_file("roanoke_daily.xlsx");
  sheet.stored.table_name = sheet.tables.at(0);
  sheet.validate();
  EXPECT_EQ(sheet.build_sql(model),
            "SELECT * FROM [" + sheet.tables[0] + "] WHERE (SAMPLED>=#1/1/2009 3:00:00#) ORDER BY SAMPLED");
  EXPECT_NE(folder.read("LOGINFO.TXT").find("UPDATING VALUES FOR"), std::string::npos);
}

TEST_F(ImportQuery, IsHeldAgainstItsSourceInOrder) {
  import_query_descriptor query;
  EXPECT_EQ(failure_of(query), "File name not set");
  query.file_name = "roanoke_daily.sqlite";
  EXPECT_EQ(failure_of(query), "Table name not set");
  query.file_name = "ORDERS.DB";
  EXPECT_EQ(failure_of(query), "Date/Time field not set");
  query.date_time_field = "Due";
  EXPECT_EQ(failure_of(query), "Query 'New Query' contains reference to non-existent field 'Due'");
  query.date_time_field = "Sale Date";
  EXPECT_EQ(failure_of(query), "Value field not set");
  query.value_field = "Amount Paid";
  query.conditions = {{"Ship VIA", 0, 0, "Pigeon"}};
  EXPECT_EQ(failure_of(query),
            "Query 'New Query' contains query condition on field 'Ship VIA' which has no selected value");
  query.conditions = {{"Ship VIA", 0, 9, "DHL"}};
  EXPECT_EQ(failure_of(query), "Query 'New Query' has a condition with the unknown comparison 9");
  point_list points;
  import_query unknown;
  EXPECT_THROW(unknown.engine.open(unknown, {.table = "x"}), query_engine_exception);
}

TEST_F(ImportQuery, ReportsAWrongValueWithItsField) {
  folder.write("numbers.csv", "Taken,Flow\n20110131,1\n20110201,2\n");
  import_query_descriptor numbers = query_on("numbers.csv", "Taken", "Flow");
  for (const bool restrict_to_run_period : {false, true}) {
    numbers.restrict_to_run_period = restrict_to_run_period;
    EXPECT_EQ(failure_of(numbers, folder.path),
              (folder.path / "numbers.csv").string() + ", field Taken: expected a date, found \"20110131\".");
  }
  folder.write("marks.csv",
               "# gauge 7\n# by hand, twice a day\nTaken,Flow,Depth\n2009-02-01,low,1\nNA,high,2\n2009-02-03,n/a,\n");
  folder.write("texts.csv", "Taken,Flow\nMonday,1\nTuesday,2\n");
  EXPECT_EQ(failure_of(query_on("texts.csv", "Taken", "Flow"), folder.path),
            folder.file("texts.csv") + ", field Taken: expected a date, found \"Monday\".");
  import_query_descriptor marks = query_on("marks.csv", "Taken", "Flow");
  EXPECT_NE(failure_of(marks, folder.path).find("field Flow: expected a number, found \"low\"."), std::string::npos);
  marks.conditions = {{"Depth", 0, 0, ""}};
  EXPECT_NE(failure_of(marks, folder.path).find("which has no selected value"), std::string::npos);
  folder.write("empty.csv", "Taken,Flow\n");
  point_list points = {{{0, 0}, 1}};
  import_query(query_on("empty.csv", "Taken", "Flow"), folder.path).execute(model_of_2009(), points);
  EXPECT_TRUE(points.empty());
  EXPECT_NE(failure_of(query_on("gone.dbf", "a", "b")).find("gone.dbf"), std::string::npos);
  EXPECT_EQ(failure_of(query_on("gone.mdb", "a", "b")).find("Cannot connect to ADO datasource: 'gone.mdb': "), 0U);
}

// A value that is not a finite number leaves its row out, and is counted.
TEST_F(ImportQuery, RowsWithoutAFiniteNumberAreLeftOutAndCounted) {
  fill_database("odd.sqlite",
                "CREATE TABLE d(t TEXT, v REAL, site TEXT); INSERT INTO d VALUES ('2009-01-01', 'dry', 'a'),"
                "('2009-01-02', 9e999, 'a'), ('2009-01-03', 3, 'b'), ('2009-01-04', -9e999, 'b'),"
                "('2009-01-05', NULL, 'b'), ('2009-01-06', '6', 'c'), ('2009-01-07', '<0.5', 'c')");
  import_query_descriptor query = query_on("odd.sqlite", "t", "v");
  query.table_name = "d";
  const double infinite = std::numeric_limits<double>::infinity();
  paradox_writer writer({{"t", paradox_writer::type::timestamp}, {"v", paradox_writer::type::number}});
  for (const double value : {infinite, 3.0, -infinite, std::numeric_limits<double>::quiet_NaN(), 6.0})
    writer.add({39814.0, value});
  writer.save(folder.file("odd.db"));
  for (const char* file : {"odd.sqlite", "odd.db"}) {
    query.file_name = file;
    query.average_duplicates = false;
    point_list points;
    const query_report report = import_query(query, folder.path).execute(model_of_2009(), points);
    EXPECT_EQ(report.without_value, report.rows - 2) << file;
    ASSERT_EQ(points.size(), 2U) << file;
    EXPECT_EQ(points[0].value + 10 * points[1].value, 63) << file;
  }
  EXPECT_EQ(in_words("Flow", query, {7, 0, 5, 2}), "Flow: odd.db [d], 7 rows, 2 points, 5 rows without a value");
  // A field in which no row has a number is not one of values.
  query.file_name = "odd.sqlite";
  query.conditions = {{"site", 0, 0, "a"}};
  EXPECT_EQ(failure_of(query, folder.path),
            folder.file("odd.sqlite") + ", table d, field v: expected a number, found \"dry\".");
  import_query live(query, folder.path);
  live.stored.conditions = {{"v", 0, 0, "3.0"}};
  EXPECT_THROW(live.validate(), query_validation_exception);
  EXPECT_EQ(live.choices[0].values, (std::vector<std::string>{"3", "6"}));
}

// Each row: a text file, what its second column has to be.
TEST_F(ImportQuery, DatesAndNumbersInTextsAreRead) {
  const struct {
    const char* content;
    std::vector<double> values;
  } files[] = {
      {"Taken,Flow\n10/1/2009,1\n9/1/2009,2\n11/1/2009,3\nNA,4\n,5\n", {2, 1, 3}}, // in order of time
      {"Taken;Flow\n1.1.2009;0,512\n2.1.2009;12,733\n3.1.2009;-1,512\n", {0.512, 12.733, -1.512}},
      {"Taken;Flow\n1.1.2009;1.234,5\n2.1.2009;0,5\n3.1.2009;2.000,25\n", {1234.5, 0.5, 2000.25}},
      {"Taken,Flow\n2009-01-01,\"1,234\"\n2009-01-02,\"1,234.5\"\n", {1234, 1234.5}},
      {"# by hand\nTaken,Flow\n2009-01-01,1\n2009-01-02,-\n2009-01-03,3\n2009-01-04,4\n", {1, 3, 4}},
      {" Taken ,Flow\n2009-01-01,1\n", {1}},
  };
  for (const auto& [content, values] : files) {
    folder.write("f.csv", content);
    point_list points;
    import_query_descriptor query = query_on("f.csv", "Taken", "Flow");
    import_query live(query, folder.path);
    live.set_file("f.csv");
    live.stored.date_time_field = live.field_names.at(0);
    live.execute(model_of_2009(), points);
    std::vector<double> read;
    for (const auto& point : points) read.push_back(point.value);
    EXPECT_EQ(read, values) << content;
  }
}

TEST_F(ImportQuery, OrdersRowsByTextsAsDates) {
  folder.write("days.csv", "x");
  fill_database("days.sqlite",
                "CREATE TABLE d(t TEXT, v REAL); INSERT INTO d VALUES ('10/1/2009', 1), ('9/1/2009', 2), "
                "('2009-11-01 06:00', 3), ('1/1/2008', 4), (NULL, 5)");
  import_query_descriptor query = query_on("days.sqlite", "t", "v");
  query.table_name = "d";
  point_list points;
  import_query(query, folder.path).execute(model_of_2009(), points);
  ASSERT_EQ(points.size(), 3U);
  EXPECT_EQ(points[0].value, 2);
  EXPECT_EQ(points[2].value, 3);
  EXPECT_EQ(date_time_text(points[2]), "11/1/2009 6:00:00");
}

// A column of day numbers with texts among them, in the field of the moments.
TEST_F(ImportQuery, ATextAmongDayNumbersIsReadOrReported) {
  const std::string numbers = "Taken,Flow\n39814,1\n39815,2\n39816,3\nNA,4\n39818,5\n";
  folder.write("days.csv", numbers + "1/6/2009,6\n39817,7\n");
  import_query_descriptor query = query_on("days.csv", "Taken", "Flow");
  point_list points;
  import_query(query, folder.path).execute(model_of_2009(), points);
  std::string values;
  for (const auto& point : points) values += std::to_string(static_cast<int>(point.value));
  EXPECT_EQ(values, "123756");
  folder.write("days.csv", numbers + "soon,6\n");
  EXPECT_EQ(failure_of(query, folder.path),
            folder.file("days.csv") + ", field Taken: expected a date, found \"soon\".");
}

// The value of a condition is looked for among the rows that are read; those it has outside of the period count, too.
TEST_F(ImportQuery, AConditionsValueMayOccurInAnyRow) {
  folder.write("sites.csv", "Taken,Site,Flow\n2009-01-02,A,1\n2008-01-01,B,2\n2009-01-01,A,3\n2009-01-01,a' OR "
                            "Site='A,4\n2009-01-01,a,5\n");
  import_query_descriptor query = query_on("sites.csv", "Taken", "Flow");
  const auto values_at = [&](const char* site) {
    query.conditions = {{"Site", 0, 0, site}};
    point_list points = {{{0, 0}, 9}};
    std::string values;
    try {
      import_query(query, folder.path).execute(model_of_2009(), points);
    } catch (const query_validation_exception&) {
      values = "no value: ";
    }
    for (const auto& point : points) values += std::to_string(static_cast<int>(point.value));
    return values;
  };
  EXPECT_EQ(values_at("A"), "31"); // in order of time
  EXPECT_EQ(values_at("B"), "");
  EXPECT_EQ(values_at("C"), "no value: 9");
  EXPECT_EQ(values_at("a' OR Site='A"), "4");
}

// What a list of values offers selects the rows that have it, in a file where SQLite reads rows and another one tests.
TEST_F(ImportQuery, EveryOfferedValueSelectsItsRows) {
  fill_database("sites.sqlite", "CREATE TABLE d(t TEXT, site TEXT, depth TEXT, wet BOOLEAN, id INTEGER, v REAL);"
                                "INSERT INTO d VALUES ('2009-01-01', 'A', '1', -1, 9007199254740993, 1),"
                                "('2009-01-02', 'B', '2', 0, 9007199254740992, 2), ('2009-01-03', 'A', '1', 1, 5, 3),"
                                "('2009-01-04', 'B', '1', 1, 5, 4), ('2009-01-05', 'b', '2', 0, 5, 5),"
                                "('2009-01-06', 'B', '2', 0, 5, 6)");
  import_query_descriptor query = query_on("sites.sqlite", "t", "v");
  query.table_name = "d";
  const auto values_of = [&](std::vector<query_condition> conditions) {
    query.conditions = std::move(conditions);
    std::string values;
    for (const bool in_period : {false, true}) {
      query.restrict_to_run_period = in_period;
      point_list points;
      import_query(query, folder.path).execute(model_of_2009(), points);
      for (const auto& point : points) values += std::to_string(static_cast<int>(point.value));
      values += in_period ? "" : " ";
    }
    return values;
  };
  EXPECT_EQ(values_of({{"site", 0, 0, "A"}, {"depth", 0, 0, "1"}, {"site", 1, 0, "B"}, {"depth", 0, 0, "2"}}),
            "12356 12356"); // OR binds less
  EXPECT_EQ(values_of({{"wet", 0, 0, "True"}}), "134 134");
  EXPECT_EQ(values_of({{"wet", 0, 0, "False"}}), "256 256");
  EXPECT_EQ(values_of({{"id", 0, 0, "9007199254740993"}}), "1 1");
  EXPECT_EQ(values_of({{"site", 0, 0, "b"}}), "2456 2456");

  import_query live(query, folder.path);
  live.validate();
  EXPECT_EQ(live.choices[0].values, (std::vector<std::string>{"A", "B", "b"}));
  point_list points;
  live.execute(model_of_2009(), points);
  EXPECT_EQ(live.choices[0].values.size(), 3U); // still to be chosen from
}

// Old data files have names and values in Windows-1252, sources in UTF-8.
TEST_F(ImportQuery, TextsOfOldDataFilesAreFoundInTheirSource) {
  folder.write("Zuflüsse.csv", "Tag,Größe,Ort\n2009-01-02,1,Köln\n2009-01-03,2,Bonn\n");
  import_query_descriptor query = query_on("Zufl\xfcsse.csv", "Tag", "Gr\xf6\xdf\x65");
  query.conditions = {{"Ort", 0, 0, "K\xf6ln"}};
  EXPECT_EQ(failure_of(query, folder.path), "none");
  point_list points;
  import_query live(query, folder.path);
  const query_report report = live.execute(model_of_2009(), points);
  EXPECT_EQ(in_words("März", query, report), "März: Zuflüsse.csv, 1 row, 1 point");
  live.validate();
  EXPECT_NE(live.build_sql(model_of_2009()).find("'Zuflüsse.csv' WHERE (Ort='Köln')"), std::string::npos);
  fs::rename(folder.path / "Zuflüsse.csv", folder.path / "Zufl\xfcsse.csv"); // the bytes of the name, too
  EXPECT_EQ(failure_of(query, folder.path), "none");
  fill_database("orte.sqlite", "CREATE TABLE Köln(Tag TEXT, Größe REAL); INSERT INTO Köln VALUES ('2009-01-02', 1)");
  query.file_name = "orte.sqlite";
  query.table_name = "K\xf6ln";
  query.conditions.clear();
  EXPECT_EQ(failure_of(query, folder.path), "none");
}

// Each value of each column's list, in columns that hold more than what they are declared for.
TEST_F(ImportQuery, OfferedValuesOfMixedColumnsSelectTheirRows) {
  std::mt19937_64 random(17);
  // Numbers that SQLite reads one step beside their digits, and others of 17 digits.
  std::string sql = "CREATE TABLE d(id INTEGER, n NUMERIC, day DATE, at TIME, b BOOL, s TEXT, any);";
  std::vector<std::string> numbers = {"99592.5320795394",
                                      "8315511.665201033",
                                      "1428.020989554322",
                                      "'x'",
                                      "'12 '",
                                      "NULL",
                                      "9e999",
                                      "-0.0",
                                      "9007199254740993",
                                      "1e300",
                                      "''"};
  for (int i = 0; i < 30; ++i)
    numbers.push_back(std::to_string(random() % 100'000'000) + "." + std::to_string(random()));
  const char* days[] = {"'2009-01-02'", "'2009-01-02 06:00'", "2454833.5000057870", "NULL", "'1/2/2009'"};
  const char* times[] = {"'06:00'", "'00:00'", "2415020.25", "NULL"};
  const char* flags[] = {"1", "0", "-1", "'yes'", "NULL"};
  const char* texts[] = {"NULL", "'a''b'", "'NA'", "''", "'1/2/2009'", "CAST(x'610062' AS TEXT)"};
  for (std::size_t i = 0; i < numbers.size(); ++i)
    sql += "INSERT INTO d VALUES(" + std::to_string(i + 1) + "," + numbers[i] + "," + days[i % std::size(days)] + "," +
           times[i % std::size(times)] + "," + flags[i % std::size(flags)] + "," + texts[i % std::size(texts)] + "," +
           (i % 3 == 0 ? "'t'" : numbers[i]) + ");";
  fill_database("mixed.sqlite", sql);
  import_query_descriptor query = query_on("mixed.sqlite", "id", "id"); // each row at a different date and time
  query.table_name = "d";
  query.restrict_to_run_period = false;
  import_query live(query, folder.path);
  live.validate();
  std::size_t offered = 0;
  for (std::size_t field = 1; field < live.field_names.size(); ++field) {
    std::map<std::string, std::vector<double>> shown;
    const auto rows = live.engine.open(live, {.table = "d", .of_several = true});
    while (rows->next())
      if (rows->is_comparable(field)) shown[rows->text(field)].push_back(rows->number(0).value_or(-1));
    live.stored.conditions = {{live.field_names[field], 0, 0, ""}};
    live.refresh_values(0);
    for (const std::string& value : std::vector(live.choices[0].values)) {
      live.stored.conditions[0].value_text = value;
      point_list points;
      live.execute(model_of_2009(), points);
      std::vector<double> selected;
      for (const auto& point : points) selected.push_back(point.value);
      EXPECT_EQ(selected, shown[value]) << live.field_names[field] << " = " << value;
      EXPECT_NE(value.find_first_not_of(' '), value.npos) << live.field_names[field];
      ++offered;
    }
  }
  EXPECT_GT(offered, 70U);
  for (const char* blank : {"", " "}) {
    live.stored.conditions = {{"s", 0, 0, blank}};
    EXPECT_EQ(failure_of(live.stored, folder.path),
              "Query 'New Query' contains query condition on field 's' which has no selected value");
  }
  live.stored.conditions = {{"n", 0, 0, "x"}};
  EXPECT_EQ(failure_of(live.stored, folder.path),
            "Query 'New Query' contains query condition on field 'n' which has no selected value");
}

// A query being put together, as in its dialog.
TEST_F(ImportQuery, ConditionsAndTheirListsStayTogether) {
  folder.write("f.csv", "Day,Site,Flow\n2009-01-01,A,1\n2009-01-02,B,2\n2009-01-03,B,3\n");
  const prevesk_dataset_data_type model = model_of_2009();
  import_query live({}, folder.path);
  live.set_file("f.csv");
  live.stored.restrict_to_run_period = false;
  live.insert_condition();
  EXPECT_EQ(live.stored.conditions[0], (query_condition{"Day", 0, 0, ""}));
  EXPECT_EQ(live.build_sql(model), "");
  EXPECT_THROW(live.open_rows(model), query_validation_exception);
  live.choose_field(0, 1);
  live.refresh_values(0);
  EXPECT_EQ(live.choices[0].values, (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(live.build_sql(model), "");
  live.choose_value(0, 1);
  EXPECT_EQ(live.build_sql(model), "SELECT * FROM 'f.csv' WHERE (Site='B')");
  live.insert_condition();
  live.enter_value(1, "1/3/2009");
  live.refresh_values(1);
  live.drill_down = true;
  live.refresh_values(1);
  EXPECT_EQ(live.choices[1].values, (std::vector<std::string>{"1/2/2009", "1/3/2009"}));
  EXPECT_EQ(live.build_sql(model), "SELECT * FROM 'f.csv' WHERE (Site='B' AND Day='1/3/2009')");
  const import_query copy = live; // with a source of its own
  live.remove_condition(0);
  EXPECT_EQ(live.build_sql(model), "SELECT * FROM 'f.csv' WHERE (Day='1/3/2009')");
  live = copy;
  live.stored.conditions[0].field_name = "Gone";
  live.read_lists();
  EXPECT_TRUE(live.choices[0].values.empty());
  EXPECT_EQ(live.choices[1].values.size(), 3U);
  EXPECT_EQ(live.build_sql(model), "");
  live.clear_conditions();
  EXPECT_EQ(live.build_sql(model), "SELECT * FROM 'f.csv'");
  import_query().read_lists(); // of a query without a file
}

TEST_F(ImportQuery, ListsShowTheirFirstItemsAndCountTheOthers) {
  std::string text = "Day,Flow,Note\n";
  for (int i = 25'000; i > 0; --i)
    text += std::to_string(i) + "," + std::to_string(i) + ".5," + std::string(1500, 'x') + "\n";
  folder.write("f.csv", text);
  import_query_descriptor query = query_on("f.csv", "Day", "Flow");
  query.restrict_to_run_period = false;
  query.conditions = {{"Flow", 0, 4, "20000.5"}};
  import_query live(query, folder.path);
  live.validate();
  EXPECT_EQ(live.choices[0].value_count, 25'000U);
  ASSERT_EQ(live.choices[0].values.size(), most_listed + 1); // and the chosen one
  EXPECT_EQ(live.choices[0].values[9'999], "10000.5");
  EXPECT_EQ(live.choices[0].values.back(), "20000.5");
  EXPECT_EQ(read_shown_rows(live, model_of_2009()).total, 5'001U);
  live.clear_conditions();
  const shown_rows shown = read_shown_rows(live, model_of_2009());
  EXPECT_EQ(shown.fields, (std::vector<std::string>{"Day", "Flow", "Note"}));
  EXPECT_EQ(shown.total, 25'000U);
  ASSERT_EQ(shown.row_count(), most_listed);
  EXPECT_EQ(shown.cells[0], "1");
  EXPECT_EQ(shown.cells[2], std::string(1000, 'x') + "…");
  EXPECT_EQ(shown.cells[shown.cells.size() - 2], "10000.5");
}

// Many rows out of order are put in order elsewhere than few.
TEST_F(ImportQuery, RowsOutOfOrderComeInOrderOfTime) {
  for (const int rows : {3000, 150'000}) {
    std::string text = "Day,Flow\n";
    for (int i = rows; i-- > 0;) text += std::to_string(2.0 + i / 2) + "," + std::to_string(i % 2) + "\n";
    folder.write("rows.csv", text);
    import_query_descriptor query = query_on("rows.csv", "Day", "Flow");
    query.restrict_to_run_period = false;
    point_list points;
    const query_report report = import_query(query, folder.path).execute(model_of_2009(), points);
    EXPECT_EQ(report.rows, static_cast<std::uint64_t>(rows));
    ASSERT_EQ(points.size(), static_cast<std::size_t>(rows / 2));
    for (std::size_t i = 1; i < points.size(); ++i) {
      ASSERT_EQ(points[i].date, points[i - 1].date + 1) << i;
      ASSERT_EQ(points[i].value, 0.5) << i;
    }
  }
}

// The rows that are kept are in memory less than twice, in whatever order they come.
TEST_F(ImportQuery, KeepsItsRowsInLittleMemory) {
  const auto growth = [&](std::size_t rows, std::size_t step) {
    std::string text = "Day,Flow\n";
    for (std::size_t i = 0; i < rows; ++i) text += std::to_string(2 + i * step % rows) + ".25,1.5\n";
    folder.write("rows.csv", text);
    text = std::string();
    import_query_descriptor query = query_on("rows.csv", "Day", "Flow");
    query.restrict_to_run_period = false;
    point_list points;
    const peak_memory memory;
    import_query(query, folder.path).execute(model_of_2009(), points);
    EXPECT_EQ(points.size(), rows);
    return memory.growth();
  };
  growth(1, 1); // the pages of the program and its libraries
  for (const auto& [rows, step] : {std::pair(100'000U, 1U), {60'000U, 7919U}}) {
    const double grown = growth(rows, step);
    if (!memory_is_measurable) continue;
    EXPECT_LT(grown, 1.5e6 + 16 * rows) << rows; // the first rows are kept until it is known that they are in order
  }
}

// A file that cannot be read is opened once.
TEST_F(ImportQuery, ALockedDatabaseIsWaitedForOnce) {
  fill_database("locked.sqlite", "CREATE TABLE d(t TEXT, v REAL)");
  sqlite3* other = nullptr;
  sqlite3_open(folder.file("locked.sqlite").c_str(), &other);
  sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
  import_query_descriptor query = query_on("locked.sqlite", "t", "v");
  query.table_name = "d";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(failure_of(query, folder.path),
            "Cannot connect to ADO datasource: 'locked.sqlite': another program has kept the database locked for more "
            "than 2 seconds.");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(3900));
  sqlite3_close(other);
}

// A database without a log, which would also count.
TEST_F(ImportQuery, ReportsHowNewItsPointsAre) {
  fill_database("a.sqlite", "CREATE TABLE d(t TEXT, v REAL); INSERT INTO d VALUES ('2009-01-02', 1)");
  import_query_descriptor query = query_on("a.sqlite", "t", "v");
  query.table_name = "d";
  query.restrict_to_run_period = false;
  const auto as_of = [&] {
    point_list points;
    return import_query(query, folder.path).execute(model_of_2009(), points).as_of.nanoseconds;
  };
  const std::int64_t before = fill_time::now().nanoseconds, reported = as_of();
  EXPECT_GE(reported, before);
  EXPECT_LE(reported, fill_time::now().nanoseconds);
  const auto ahead = fs::file_time_type::clock::now() + std::chrono::hours(1); // by a server's clock
  fs::last_write_time(folder.path / "a.sqlite", ahead);
  EXPECT_GE(as_of(), before + 3'600'000'000'000);
  EXPECT_LE(as_of(), fill_time::now().nanoseconds + 3'600'000'000'000);
}

TEST_F(ImportQuery, AChangedMemoFileIsReadAgain) {
  fs::copy_file(tables_folder / "dbase_8b.dbf", folder.path / "m.dbf");
  fs::copy_file(tables_folder / "dbase_8b.dbt", folder.path / "m.dbt");
  import_query live(query_on("m.dbf", "DATE", "NUMERICAL"), folder.path);
  live.set_file("m.dbf");
  live.stored.conditions = {{"MEMO", 0, 0, ""}};
  live.refresh_values(0);
  const auto before = live.choices[0].values;
  std::string memo = folder.read("m.dbt");
  memo[memo.find("First memo")] = 'f';
  folder.write("m.dbt", memo + " ");
  live.refresh_values(0);
  EXPECT_NE(live.choices[0].values, before);
}

bool is_open(const fs::path& file) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd"))
    if (fs::read_symlink(entry.path(), ignored) == file) return true;
  return false;
}

TEST_F(ImportQuery, DisconnectingLetsAFileOfSeveralTablesGo) {
  for (const char* name : {"roanoke_daily.sqlite", "roanoke_daily.xlsx", "roanoke_daily.xls"}) {
    fs::copy_file(tables_folder / name, folder.path / name);
    import_query live(query_on(name, "SAMPLED", "DO_MGL"), folder.path);
    live.set_file(name);
    EXPECT_FALSE(is_open(folder.path / name)) << name;
    live.engine.connect(live);
    live.set_table(live.tables.at(0));
    EXPECT_EQ(live.field_names.at(1), "SAMPLED");
    live.stored.conditions = {{"SITE_NO", 0, 0, "02081022"}};
    live.refresh_values(0);
    EXPECT_EQ(live.choices[0].values.size(), 2U) << name;
    EXPECT_FALSE(is_open(folder.path / name)) << name;
  }
}

// The pass reads the file of the first query again only after it has changed, here to other types in another order.
TEST_F(ImportQuery, AFileThatChangesWithinAPassIsReadAgain) {
  const auto write = [&](const std::string& sql) {
    fs::remove(folder.path / "a.sqlite");
    fill_database("a.sqlite", sql);
  };
  import_query_descriptor query = query_on("a.sqlite", "t", "v");
  query.table_name = "d";
  const query_executor execute = executor_of_a_pass(folder.path);
  const auto first_value = [&] {
    point_list points;
    execute(query, model_of_2009(), points);
    EXPECT_FALSE(is_open(folder.path / "a.sqlite"));
    return points.empty() ? 0 : points[0].value;
  };
  write("CREATE TABLE d(t TEXT, v REAL); INSERT INTO d VALUES ('2009-01-02', 1)");
  EXPECT_EQ(first_value(), 1);
  EXPECT_EQ(first_value(), 1);
  write("CREATE TABLE d(v INTEGER, other TEXT, t DATE); INSERT INTO d VALUES (2, 'x', '2009-01-03')");
  EXPECT_EQ(first_value(), 2);
  query = query_on("b.csv", "t", "v");
  folder.write("b.csv", "t,v\n2009-01-02,3\n");
  EXPECT_EQ(first_value(), 3);
}

TEST_F(ImportQuery, BuildsNothingFromWhatIsNotValidated) {
  import_query_descriptor query = query_on("ORDERS.DB", "Sale Date", "Total Invoice");
  query.conditions = {{"Ship VIA", 0, 0, "DHL"}};
  import_query live(query, folder.path); // where there is no such file
  EXPECT_THROW(live.validate(), query_exception);
  EXPECT_EQ(live.build_sql(model_of_2009()), "");
  import_query good(query, tables_folder);
  good.validate();
  good.stored.conditions.push_back({"Order No", 0, 0, "1001"});
  EXPECT_EQ(good.build_sql(model_of_2009()), "");
}

TEST_F(ImportQuery, ADayWithoutADateOrBeforeTheFirstIsLeftOut) {
  folder.write("days.csv", "Taken,Flow\n1899-12-30,1\n1899-12-29,2\n2009-06-01,3\n,4\n");
  import_query_descriptor query = query_on("days.csv", "Taken", "Flow");
  query.restrict_to_run_period = false;
  point_list points;
  const query_report report = import_query(query, folder.path).execute(model_of_2009(), points);
  EXPECT_EQ(report.without_moment, 2U);
  ASSERT_EQ(points.size(), 2U);
  EXPECT_EQ(date_time_text(points[0]), "12/29/1899 0:00:00");
}

} // namespace
} // namespace vesk
