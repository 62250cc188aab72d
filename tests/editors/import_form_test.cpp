// The import of a series, from the table to the points.
#include "editing_host.h"
#include "editors/print_interval_form.h"
#include "query/query_log.h"
#include "sqlite_file.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::int32_t first_day = 150754; // 1 October 2012

moment_value_pair_type point(std::int32_t day, double value) {
  return {{first_day + day, 0}, value};
}

class Import : public testing::Test {
protected:
  Import() {
    host.folder = folder.path;
    host.data.seed_date = first_day - date_time_origin;
    host.data.seed_time = 0;
    host.data.time_steps.points = {point(0, 0.1), point(10, 0.1)};
    series().points = {point(0, 7)};
    folder.write("gauges.csv", "Date_Time,Site,Result\n2012-10-02,A,1\n2012-10-01,A,5\n2012-10-03,B,2\n"
                               "2013-01-01,A,9\n");
    editor.FormShow();
  }
  ~Import() override { moment_type::moment_seed_is_set = false; }

  stored_series& series() { return host.data.print_intervals; }

  // Opens the dialog, works in it, and closes it with OK if `work` returns true.
  void in_dialog(std::function<bool(TImportTimeSeriesForm&)> work) {
    host.open = &host.import_form();
    host.on_import = std::move(work);
    editor.ImportButtonClick(*editor.panels()[0]);
    host.open = nullptr;
  }
  bool by_ok(TImportTimeSeriesForm& dialog) { return dialog.FormCloseQuery(true); }
  void browse(TImportTimeSeriesForm& dialog, const std::string& name) {
    host.file = folder.file(name);
    dialog.BrowseButtonClick();
  }
  std::string read_back() {
    std::string values;
    for (const auto& one : series().points)
      values += std::to_string(one.date - first_day) + ":" + std::to_string(static_cast<int>(one.value)) + " ";
    return values;
  }

  temporary_folder folder;
  editing_host host;
  TPrintIntervalForm editor{host};
};

const char* const immediate =
    "Confirm Immediate Query: You have not selected the \"Import data when model is run\" "
    "checkbox.\r\nAs a result, the data will be imported now and not during the model run.\r\n"
    "Click OK to continue, or click Cancel to change this now";
const char* const deferred = "Confirm Live Query: You have selected the \"Import data when model is run\" checkbox.\r\n"
                             "As a result, the data will not be imported now but instead during the model run.\r\n"
                             "Click OK to continue, or click Cancel to change this now";

TEST_F(Import, FillsASeriesFromANewQueryInOneStep) {
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_EQ(dialog.message(), "Select the file that holds the data.");
    browse(dialog, "gauges.csv");
    EXPECT_EQ(dialog.stored().file_name, "gauges.csv"); // relative to the data file
    EXPECT_EQ(dialog.date_time_field(), 0U);
    EXPECT_EQ(dialog.value_field(), 2U);
    EXPECT_EQ(dialog.sql(), "SELECT * FROM 'gauges.csv' WHERE (Date_Time>='10/1/2012, 0:00:00' AND "
                            "Date_Time<='10/11/2012, 0:00:00') ORDER BY Date_Time");
    host.answer = box_answer::cancel;
    EXPECT_FALSE(dialog.ImportButtonClick());
    EXPECT_EQ(read_back(), "0:7 ");
    host.answer = box_answer::ok;
    return dialog.ImportButtonClick();
  });
  EXPECT_THAT(host.boxes, ElementsAre(immediate, immediate));
  EXPECT_EQ(read_back(), "0:5 1:1 2:2 ");
  EXPECT_EQ(series().query->value_field, "Result");
  EXPECT_EQ(editor.message(), "Imported: gauges.csv, 3 rows, 3 points.");
  EXPECT_EQ(editor.panels()[0]->table.row_limit(), 3U);
  EXPECT_EQ(host.undo_label(), "Print Interval: Import");
  host.undo();
  EXPECT_EQ(host.undo_label(), "");
  EXPECT_EQ(read_back(), "0:7 ");
  EXPECT_EQ(series().query->file_name, "");
}

TEST_F(Import, AFailureOrCancelLeavesSeriesAndQuery) {
  const prevesk_dataset_data_type before = host.data;
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_FALSE(dialog.ImportButtonClick());
    dialog.GraphButtonClick();
    dialog.RunQueryButtonClick();
    EXPECT_THAT(host.boxes, ElementsAre(immediate, "Import error: File name not set", "Import error: File name not set",
                                        "Error: Cannot execute query on dataset of unknown type"));
    browse(dialog, "gauges.csv");
    std::filesystem::remove(folder.path / "gauges.csv"); // while the dialog is open
    host.boxes.clear();
    EXPECT_FALSE(dialog.ImportButtonClick());
    dialog.RunQueryButtonClick();
    dialog.InsertButtonClick();
    browse(dialog, "gauges.csv");
    EXPECT_FALSE(dialog.FileNameEditChange("none.csv"));
    const std::string gone =
        "gauges.csv: no such file, neither in the folder of the data file nor in the current folder.";
    EXPECT_THAT(host.boxes, ElementsAre(immediate, "Import error: " + gone, "Error: " + gone, "Error: " + gone,
                                        "Error: " + gone, HasSubstr("none.csv: no such file")));
    EXPECT_EQ(dialog.stored().file_name, "gauges.csv");
    EXPECT_EQ(dialog.stored().conditions.size(), 1U);
    folder.write("gauges.csv", "Date_Time,Result\n2012-10-02,wet\n2012-10-03,dry\n");
    host.boxes.clear();
    dialog.ResetAllButtonClick();
    browse(dialog, "gauges.csv");
    EXPECT_FALSE(dialog.ImportButtonClick());
    EXPECT_THAT(host.boxes, ElementsAre(immediate, HasSubstr("expected a number, found \"wet\"")));
    host.cancels_long_work = true;
    dialog.TableListChange(0);
    EXPECT_FALSE(dialog.ImportButtonClick());
    EXPECT_EQ(dialog.message(), "Cancelled. Nothing was changed.");
    return false;
  });
  EXPECT_EQ(host.data, before);
  EXPECT_EQ(host.undo_label(), "");
}

TEST_F(Import, ADeferredQueryIsStoredAndTheGridShowsIt) {
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "gauges.csv");
    for (const import_option& option : TImportTimeSeriesForm::options())
      if (option.member == &import_query_descriptor::deferred) dialog.OptionClick(option, true);
    return dialog.ImportButtonClick();
  });
  EXPECT_THAT(host.boxes, ElementsAre(deferred));
  EXPECT_EQ(read_back(), "0:7 ");
  EXPECT_TRUE(series().query->deferred);
  EXPECT_THAT(editor.deferred_note(*editor.panels()[0]), StartsWith("Filled by its query"));
  EXPECT_EQ(editor.message(), "The query is stored. It fills the series before each run.");
}

TEST_F(Import, ADeferredQueryThatCannotWorkIsStoredWithTheReason) {
  for (const bool file_is_gone : {false, true}) {
    in_dialog([&](TImportTimeSeriesForm& dialog) {
      if (!file_is_gone) browse(dialog, "gauges.csv");
      for (const import_option& option : TImportTimeSeriesForm::options())
        if (option.member == &import_query_descriptor::deferred) dialog.OptionClick(option, true);
      if (!file_is_gone) dialog.InsertButtonClick(); // a condition without a value
      if (file_is_gone) std::filesystem::remove(folder.path / "gauges.csv");
      return dialog.ImportButtonClick();
    });
    EXPECT_TRUE(series().query->deferred);
    EXPECT_THAT(editor.message(), AllOf(StartsWith("The query is stored, but it would fail now: "),
                                        HasSubstr(file_is_gone ? "gauges.csv: no such file" : "no selected value")));
  }
}

TEST_F(Import, OkStoresTheQueryOnlyAndNothingWithoutAChange) {
  import_query_descriptor old;
  old.name = "Old";
  const import_query_descriptor fresh = old;
  old.file_name = "gauges.csv";
  old.date_time_field = "Gone";
  series().query.edit() = old;
  const auto before = host.data;
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_EQ(dialog.date_time_field(), std::nullopt); // the table lacks it, and the query keeps it
    EXPECT_EQ(dialog.value_field(), 2U);               // preselected, since the query had none
    dialog.ResetAllButtonClick();
    EXPECT_EQ(dialog.stored(), fresh);
    return false;
  });
  series().query.edit().value_field = "Site";
  in_dialog([&](TImportTimeSeriesForm& dialog) { return by_ok(dialog); });
  EXPECT_EQ(host.undo_label(), "");
  series().points = {point(3, 3), point(1, 1)};
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    dialog.DateTimeFieldChange(0);
    return by_ok(dialog);
  });
  EXPECT_EQ(read_back(), "1:1 3:3 "); // sorted, as after every OK
  EXPECT_EQ(series().query->date_time_field, "Date_Time");
  EXPECT_EQ(host.undo_label(), "Print Interval: Query");
}

TEST_F(Import, TextsOfOldDataFilesStayAsTheyAreWithoutAChange) {
  folder.write("gauges.csv", "Date_Time,Größe,Ort\n2012-10-02,1,Köln\n");
  series().query.edit().file_name = "gauges.csv";
  series().query.edit().date_time_field = "Date_Time";
  series().query.edit().value_field = "Gr\xf6\xdf\x65";
  series().query.edit().conditions = {{"Ort", 0, 0, "K\xf6ln"}};
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_EQ(dialog.value_field(), 1U);
    EXPECT_EQ(dialog.ConditionTable.text(0, 3), "Köln");
    EXPECT_THAT(dialog.sql(), HasSubstr("Ort='Köln'"));
    return by_ok(dialog);
  });
  EXPECT_EQ(host.undo_label(), "");
  EXPECT_EQ(series().query->conditions[0].value_text, "K\xf6ln");
}

TEST_F(Import, AChangeOfTableKeepsItsOwnFieldsAndErasesTheConditions) {
  write_sqlite(folder.file("rivers.sqlite"),
               "CREATE TABLE a(day TEXT, flow REAL); CREATE TABLE b(day TEXT, result REAL);"
               "CREATE TABLE c(depth REAL); INSERT INTO a VALUES ('2012-10-01', 1)");
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "rivers.sqlite");
    EXPECT_THAT(dialog.tables(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(dialog.table(), 0U);
    EXPECT_EQ(dialog.date_time_field(), std::nullopt);
    dialog.DateTimeFieldChange(0);
    dialog.ValueFieldChange(1);
    dialog.InsertButtonClick();
    dialog.TableListChange(1);
    EXPECT_TRUE(dialog.stored().conditions.empty());
    EXPECT_EQ(dialog.date_time_field(), 0U);
    EXPECT_EQ(dialog.stored().value_field, "result");
    dialog.TableListChange(2);
    EXPECT_EQ(dialog.value_field(), std::nullopt);
    EXPECT_EQ(dialog.stored().value_field, "result");
    browse(dialog, "../elsewhere.csv");
    EXPECT_THAT(host.boxes, ElementsAre(HasSubstr("no such file")));
    EXPECT_EQ(dialog.table(), 2U);
    return false;
  });
  EXPECT_THAT(host.file_filter,
              StartsWith("All recognized types|*.db;*.dbf;*.xls;*.mdb;*.xlsx;*.ods;*.accdb;*.sqlite;*.csv;*.tsv;*.txt|"
                         "DBase Tables (*.dbf)|*.dbf|Excel Spreadsheets (*.xls)|*.xls|"
                         "Access Databases (*.mdb)|*.mdb|Paradox Tables (*.db)|*.db|"));
}

TEST_F(Import, ConditionsAreEditedInTheirTable) {
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "gauges.csv");
    TFillCalcTable& table = dialog.ConditionTable;
    EXPECT_EQ(dialog.value_note(), "No conditions: all rows are used.");
    dialog.InsertButtonClick();
    EXPECT_EQ(table.text(0, 1) + table.text(0, 2) + table.text(0, 3), "Date_Time=");
    EXPECT_EQ(dialog.sql(), "");
    EXPECT_FALSE(table.is_editable(0, 0)); // the first row cannot be linked to a previous one
    EXPECT_TRUE(table.enter(0, 1, "Site"));
    EXPECT_FALSE(table.enter(0, 3, "C"));
    table.give_up_refused();
    EXPECT_TRUE(table.enter(0, 3, "A"));
    EXPECT_TRUE(table.enter(0, 1, "Site", true)); // chosen again from the list
    EXPECT_EQ(dialog.stored().conditions[0].value_text, "A");
    dialog.InsertButtonClick();
    EXPECT_EQ(table.active_row(), 1U);
    EXPECT_TRUE(table.enter(1, 0, "OR") && table.enter(1, 2, ">=") && table.enter(1, 3, "10/3/2012"));
    EXPECT_THAT(dialog.sql(), HasSubstr("WHERE (Site='A' OR Date_Time>='10/3/2012') AND"));
    dialog.RunQueryButtonClick();
    EXPECT_EQ(dialog.results_note(), "Results: 3 rows");
    EXPECT_EQ(dialog.ResultsTable.text(0, 0) + dialog.ResultsTable.text(0, 1), "10/1/2012A");
    table.set_active(0, 1);
    dialog.DeleteButtonClick();
    EXPECT_EQ(table.text(0, 3), "10/3/2012");
    dialog.GraphButtonClick();
    return dialog.ImportButtonClick();
  });
  EXPECT_EQ(host.graphs.size(), 1U);
  EXPECT_EQ(read_back(), "2:2 ");
}

// The rows without an entry are not those that the user has chosen.
TEST_F(Import, AConditionWithoutAValueSelectsNothing) {
  folder.write("gauges.csv", "Date_Time,Site,Result\n2012-10-02,,1\n2012-10-03,A,2\n2012-10-04, ,4\n");
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "gauges.csv");
    TFillCalcTable& table = dialog.ConditionTable;
    dialog.InsertButtonClick();
    EXPECT_TRUE(table.enter(0, 1, "Site"));
    EXPECT_EQ(table.content().columns()[3].type.items->size(), 1U);
    EXPECT_EQ(dialog.sql(), "");
    EXPECT_FALSE(dialog.ImportButtonClick());
    EXPECT_THAT(host.boxes.back(), HasSubstr("on field 'Site' which has no selected value"));
    EXPECT_TRUE(table.enter(0, 2, ">=") && table.enter(0, 3, "A")); // leaves out the rows without a site
    return dialog.ImportButtonClick();
  });
  EXPECT_EQ(read_back(), "2:2 ");
}

TEST_F(Import, WithoutRowsSaysHowManyPointsWent) {
  folder.write("gauges.csv", "Date_Time,Result\n1999-10-02,1\n");
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "gauges.csv");
    EXPECT_TRUE(dialog.ImportButtonClick());
    EXPECT_THAT(dialog.report(), HasSubstr("no rows found."));
    EXPECT_THAT(dialog.report(), HasSubstr(" 1 point was removed; Undo restores it."));
    return true;
  });
  EXPECT_EQ(read_back(), "");
}

// A value outside the list is looked up in the table.
TEST_F(Import, ValuesBeyondTheListCanBeTyped) {
  std::string text = "Day,Flow\n";
  for (int i = 1; i <= 12'000; ++i) text += std::to_string(i + 41'000) + "," + std::to_string(i) + "\n";
  folder.write("long.csv", text);
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "long.csv");
    dialog.InsertButtonClick();
    TFillCalcTable& table = dialog.ConditionTable;
    EXPECT_TRUE(table.enter(0, 1, "Flow"));
    EXPECT_EQ(dialog.value_note(), "Flow: the first 10000 of 12000 values are listed; others can be typed.");
    EXPECT_TRUE(table.enter(0, 3, "11500"));
    EXPECT_THAT(dialog.sql(), HasSubstr("Flow=11500"));
    EXPECT_TRUE(table.enter(0, 3, "12500"));
    EXPECT_EQ(dialog.message(), "Flow has no value \"12500\" in this table.");
    EXPECT_EQ(dialog.sql(), "");
    dialog.DeleteButtonClick();
    for (const import_option& option : TImportTimeSeriesForm::options()) dialog.OptionClick(option, false);
    dialog.RunQueryButtonClick();
    EXPECT_EQ(dialog.results_note(), "Results: the first 10000 of 12000 rows");
    return false;
  });
}

// The rows may have been viewed long before they are imported.
TEST_F(Import, TheSeriesIsAsNewAsTheLastReadingOfItsSource) {
  host.data.origin.file = folder.path / "river.vki";
  host.data.origin.identity.changed_seconds = 1'700'000'000;
  fill_time looked_at, read;
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "gauges.csv");
    dialog.RunQueryButtonClick();
    looked_at = fill_time::now();
    folder.write("gauges.csv", "Date_Time,Result\n2012-10-02,8\n");
    host.in_reading = [&] {
      if (read.nanoseconds == 0) read = fill_time::now();
    };
    return dialog.ImportButtonClick();
  });
  host.in_reading = nullptr;
  EXPECT_EQ(read_back(), "1:8 ");
  EXPECT_GT(series().filled.nanoseconds, looked_at.nanoseconds);
  EXPECT_LE(series().filled.nanoseconds, read.nanoseconds); // anything written later may be missing
  EXPECT_EQ(editor.source_note(*editor.panels()[0]), "");
  folder.write("gauges.csv", "Date_Time,Result\n2012-10-02,9\n");
  std::filesystem::last_write_time(folder.path / "gauges.csv",
                                   std::filesystem::file_time_type::clock::now() + std::chrono::seconds(1));
  editor.FormShow();
  EXPECT_EQ(editor.source_note(*editor.panels()[0]), "gauges.csv has changed since this series was filled from it.");
  host.forget_steps();
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    folder.write("gauges.csv", "Date_Time,Result\n2012-10-02,8\n"); // rewritten with the same content
    return dialog.ImportButtonClick();
  });
  EXPECT_EQ(host.undo_label(), "");
  EXPECT_EQ(editor.source_note(*editor.panels()[0]), "");
}

TEST_F(Import, AJobThatEndsUnderTheDialogTakesNothingWithIt) {
  prevesk_dataset_data_type of_job = host.data;
  of_job.description = "of a job";
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "gauges.csv");
    host.in_long_work = [&] { host.replace_data(of_job); };
    EXPECT_FALSE(dialog.ImportButtonClick());
    EXPECT_EQ(dialog.message(), "The data set was replaced while the table was read. Repeat the command.");
    EXPECT_EQ(read_back(), "0:7 ");
    host.in_long_work = nullptr;
    EXPECT_EQ(dialog.stored().file_name, "gauges.csv");
    return dialog.ImportButtonClick();
  });
  EXPECT_EQ(read_back(), "0:5 1:1 2:2 ");
  EXPECT_EQ(host.data.description, "of a job");
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    host.replace_data(of_job);
    editor.data_set_replaced();
    return by_ok(dialog);
  });
  EXPECT_THAT(editor.message(), StartsWith("A job has replaced the data set."));

  host.data.time_functions.resize(1);
  TImportTimeSeriesForm& dialog = host.import_form();
  dialog.begin({series_kind::time_function, 0, 0}, "Time Functions");
  host.open = &dialog;
  host.replace_data(of_job); // it has no time function
  EXPECT_THAT(dialog.message(), HasSubstr("no longer contains this series. Choose Cancel."));
  EXPECT_FALSE(dialog.ImportButtonClick());
  EXPECT_FALSE(dialog.FormCloseQuery(true));
  EXPECT_TRUE(dialog.FormCloseQuery(false));
}

// The points of another series at the same position must not be overwritten.
TEST_F(Import, AfterAJobTheSeriesIsFilledWhereverItNowIs) {
  host.data.flow_fields.resize(1);
  host.data.flow_fields.edit(0).description = "Surface";
  const auto functions = [this]() -> auto& {
    return host.data.flow_fields.edit(0).functions;
  };
  functions().resize(3);
  for (std::size_t i = 0; i < 3; ++i) functions().edit(i).description = std::array{"Inflow", "Inflow", "Outflow"}[i];
  const prevesk_dataset_data_type before = host.data;
  TImportTimeSeriesForm& dialog = host.import_form();
  dialog.begin({series_kind::flow_function, 0, 2}, "Flows");
  dialog.FormShow();
  browse(dialog, "gauges.csv");
  host.open = &dialog;
  EXPECT_EQ(dialog.series_name(), "Surface Function #3");
  functions().erase(0, 1);
  functions().insert(2, {});
  host.replace_data(prevesk_dataset_data_type(host.data));
  EXPECT_EQ(dialog.series_name(), "Surface Function #2");
  EXPECT_TRUE(dialog.ImportButtonClick());
  EXPECT_EQ(functions()[1].points.size(), 3U);
  EXPECT_TRUE(functions()[2].points.empty());

  host.replace_data(before);
  dialog.begin({series_kind::flow_function, 0, 1}, "Flows"); // two have the same name
  functions().erase(0, 1);
  host.replace_data(prevesk_dataset_data_type(host.data));
  EXPECT_THAT(dialog.message(), HasSubstr("which no longer contains this series. Choose Cancel."));
  EXPECT_FALSE(dialog.ImportButtonClick() || dialog.FormCloseQuery(true));
}

// Drill down narrows a list that is read, but does not read one. After a cancelled read the message does not claim that
// nothing was changed.
TEST_F(Import, ListsAreReadForTheirOwnRowAlone) {
  set_query_trace_folder(folder.path);
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_EQ(dialog.sql(), "SELECT * FROM []");
    browse(dialog, "gauges.csv");
    TFillCalcTable& table = dialog.ConditionTable;
    dialog.InsertButtonClick();
    EXPECT_TRUE(table.enter(0, 1, "Site") && table.enter(0, 3, "B"));
    dialog.InsertButtonClick();
    EXPECT_TRUE(table.enter(1, 1, "Result"));
    host.in_long_work = [] { ADD_FAILURE() << "a list is read"; };
    dialog.OptionClick(TImportTimeSeriesForm::options()[4], true);
    EXPECT_TRUE(table.enter(1, 3, "9")); // read before
    host.in_long_work = nullptr;
    EXPECT_TRUE(table.enter(1, 1, "Date_Time") && table.enter(1, 1, "Result"));
    EXPECT_FALSE(table.enter(1, 3, "9"));
    table.give_up_refused();
    host.cancels_long_work = true;
    EXPECT_TRUE(table.enter(1, 1, "Date_Time"));
    EXPECT_EQ(dialog.message(), "Cancelled. The values of Date_Time were not read.");
    host.cancels_long_work = false;
    return false;
  });
  EXPECT_THAT(folder.read("LOGINFO.TXT"), HasSubstr("TCT_VALUES FOR ROW2, FIELD:Resultwith that=New Query\n"));
  set_query_trace_folder({});

  series().query.edit().file_name = "gone.csv";
  series().query.edit().conditions.resize(1);
  host.boxes.clear();
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_EQ(dialog.message(), "The table could not be read. Run query shows why.");
    EXPECT_THAT(dialog.sql() + dialog.sql_hint(), StartsWith("The table has not been read."));
    EXPECT_THAT(host.boxes, IsEmpty());
    dialog.RunQueryButtonClick();
    EXPECT_THAT(host.boxes, ElementsAre(StartsWith("Error: gone.csv: no such file")));
    return false;
  });
}

// A table that is gone is replaced by one of those that there are.
TEST_F(Import, WhatCouldBeReadAtTheOpeningIsShown) {
  write_sqlite(folder.file("rivers.sqlite"),
               "CREATE TABLE a(day TEXT, flow REAL); CREATE TABLE b(day TEXT, result REAL);"
               "INSERT INTO b VALUES ('2012-10-01', 1)");
  series().query.edit().file_name = "rivers.sqlite";
  series().query.edit().table_name = "renamed";
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_THAT(host.boxes, IsEmpty());
    EXPECT_THAT(dialog.tables(), ElementsAre("a", "b"));
    EXPECT_EQ(dialog.table(), std::nullopt);
    dialog.TableListChange(1);
    EXPECT_EQ(dialog.value_field(), 1U);
    return false;
  });
  series().query.edit().table_name = "b";
  host.cancels_long_work = true;
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    EXPECT_EQ(dialog.message(), "Cancelled. The table was not read; Run query reads it.");
    host.cancels_long_work = false;
    dialog.DateTimeFieldChange(0); // no list yet
    dialog.RunQueryButtonClick();
    EXPECT_EQ(dialog.value_field(), 1U);
    return false;
  });
}

// Otherwise the query would run with the old value while the table shows the new one.
TEST_F(Import, ARefusedConditionHoldsUpEveryCommandButCancel) {
  in_dialog([&](TImportTimeSeriesForm& dialog) {
    browse(dialog, "gauges.csv");
    TFillCalcTable& table = dialog.ConditionTable;
    dialog.InsertButtonClick();
    EXPECT_TRUE(table.enter(0, 1, "Site") && table.enter(0, 3, "A"));
    dialog.InsertButtonClick();
    int led_back = 0;
    dialog.OnRefusal = [&] { ++led_back; };
    host.boxes.clear();
    const import_query_descriptor query = dialog.stored();
    table.set_active(0, 3);
    EXPECT_FALSE(table.enter(0, 3, "C"));
    table.set_active(1, 1);
    EXPECT_THAT(dialog.message(), StartsWith("Condition 1: \"C\" is not in the list"));
    EXPECT_FALSE(dialog.ImportButtonClick() || dialog.FormCloseQuery(true) || dialog.FileNameEditChange("x.csv"));
    for (const auto command : {&TImportTimeSeriesForm::InsertButtonClick, &TImportTimeSeriesForm::DeleteButtonClick,
                               &TImportTimeSeriesForm::RunQueryButtonClick, &TImportTimeSeriesForm::GraphButtonClick,
                               &TImportTimeSeriesForm::ResetAllButtonClick, &TImportTimeSeriesForm::BrowseButtonClick})
      (dialog.*command)();
    dialog.ValueFieldChange(1);
    dialog.DateTimeFieldChange(1);
    dialog.OptionClick(TImportTimeSeriesForm::options()[1], false);
    EXPECT_EQ(led_back, 12);
    EXPECT_EQ(table.active_row(), 0U);
    EXPECT_EQ(table.text(0, 3), "C");
    EXPECT_EQ(dialog.stored(), query);
    EXPECT_THAT(host.boxes, IsEmpty());
    EXPECT_TRUE(dialog.FormCloseQuery(false));
    EXPECT_TRUE(table.enter(0, 3, "B"));
    dialog.OnRefusal = nullptr;
    dialog.DeleteButtonClick();
    return false;
  });
}

} // namespace
} // namespace vesk
