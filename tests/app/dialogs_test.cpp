#include "app/forms.h"
#include "app/main_form.h"
#include "noting_interface.h"
#include "print_table.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace vesk {
namespace {

using lines = std::vector<std::string>;

class Dialogs : public testing::Test {
protected:
  temporary_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini"};

  void new_data_set() {
    form.current_data_set = std::make_unique<prevesk_dataset_data_type>();
    form.backup_data_set = std::make_unique<prevesk_dataset_data_type>(*form.current_data_set);
  }
};

TEST_F(Dialogs, PreferencesShowAndSetBothSwitches) {
  TPreferenceConfigurationForm& preferences = form.forms().preferences;
  form.EnabledebugmodeItemClick();
  preferences.FormShow();
  EXPECT_FALSE(preferences.LoggingEnabledCheckBox);
  EXPECT_EQ(preferences.diagnostic_levels[preferences.DiagnosticLevelComboBox], "Full");
  preferences.LoggingEnabledCheckBox = true;
  preferences.DiagnosticLevelComboBox = 1;
  EXPECT_TRUE(preferences.ShowResultsCheckBox);
  preferences.ShowResultsCheckBox = false;
  EXPECT_TRUE(preferences.FormCloseQuery(false));
  EXPECT_EQ(form.diagnostic_level(), 2); // until OK
  EXPECT_TRUE(preferences.FormCloseQuery(true));
  EXPECT_TRUE(form.logging_enabled());
  EXPECT_EQ(form.diagnostic_level(), 1);
  EXPECT_FALSE(form.settings.ShowResultsAfterRun);
  form.set_diagnostic_level(9); // as an engine may
  preferences.FormShow();
  preferences.FormCloseQuery(true);
  EXPECT_EQ(form.diagnostic_level(), 9);
}

TEST_F(Dialogs, TheProjectEditorWorksOnTheDataSetsList) {
  TEditProjectForm& project = form.forms().project;
  TFillCalcTable& table = project.panels()[0]->table;
  editor_panel& panel = *project.panels()[0];
  project.FormShow();
  project.InsertRowButtonClick(panel); // no data set
  new_data_set();
  project.FormShow();
  ui.file = "/rivers/map.shp";
  project.BrowseButtonClick(); // an empty list
  project.InsertRowButtonClick(panel);
  project.BrowseButtonClick();
  EXPECT_TRUE(table.extend_on_down(move_command::down));
  EXPECT_TRUE(table.enter(1, 0, std::string(300, 'x')));
  EXPECT_EQ(print(table), "/rivers/map.shp\n" + std::string(255, 'x') + "\n");
  EXPECT_EQ(form.undo_label(), "Related project files: Edit");
  project.DeleteRowButtonClick(panel);
  table.set_active(0, 0);
  project.InsertRowButtonClick(panel);
  EXPECT_EQ(form.current_data_set->project_files, (shared_list<project_component>{"", "/rivers/map.shp"}));
}

TEST_F(Dialogs, TheProjectEditorRefusesDataFilesFirstAndThenBlanks) {
  TEditProjectForm& project = form.forms().project;
  new_data_set();
  form.current_data_set->project_files = {"", "sub.dir\\a.Vki"};
  project.FormShow();
  EXPECT_TRUE(project.FormCloseQuery(false));
  EXPECT_FALSE(project.FormCloseQuery(true));
  EXPECT_EQ(ui.take_boxes(), lines{"Error: VESK Input Files (VKI) may not be specified"});
  project.panels()[0]->table.enter(1, 0, "a.db");
  EXPECT_FALSE(project.FormCloseQuery(true));
  EXPECT_EQ(ui.take_boxes(), lines{"Error: Blank filenames are not allowed"});
  project.panels()[0]->table.enter(0, 0, "vki");
  EXPECT_TRUE(project.FormCloseQuery(true));
  EXPECT_EQ(ui.boxes, lines{});
}

// What follows the settings dialog, whatever closed it: empty series get their points, as one step.
TEST_F(Dialogs, TheSettingsDialogGivesDefaultPoints) {
  new_data_set();
  form.current_data_set->print_intervals.points.clear();
  ui.form_result = false;
  form.ParameterizationItemClick();
  EXPECT_EQ(form.current_data_set->print_intervals.points.size(), 2U);
  EXPECT_EQ(form.undo_label(), "Edit Parameters");
  form.undo();
  EXPECT_EQ(form.current_data_set->print_intervals.points.size(), 0U);
}

TEST_F(Dialogs, CancelTakesStepsBackAndUndoBringsThemAgain) {
  new_data_set();
  const std::size_t points = form.current_data_set->print_intervals.points.size();
  TPrintIntervalForm& editor = form.forms().print_interval;
  ui.form_result = false;
  ui.in_form = [&] {
    EXPECT_EQ(form.undo_label(), ""); // not beyond the opening
    for (int i = 0; i < 3; ++i) editor.InsertRowButtonClick(*editor.panels()[0]);
    const lines before = ui.lines;
    form.undo();
    EXPECT_EQ(ui.lines, before); // the dialog says it
  };
  form.PrintIntervalItemClick();
  EXPECT_EQ(form.current_data_set->print_intervals.points.size(), points);
  EXPECT_EQ(form.undo_label(), "Cancel Print Interval");
  form.undo();
  EXPECT_EQ(form.current_data_set->print_intervals.points.size(), points + 2);
  form.undo();
  form.undo();
  EXPECT_EQ(form.current_data_set->print_intervals.points.size(), points);
  ui.form_result = ui.closes_forms = true;
  form.PrintIntervalItemClick(); // two equal rows: refused
  EXPECT_EQ(ui.take_boxes(), lines{"Cannot accept data: Each record must be unique"});
}

// One dialog in two modes. What OK does to the boundaries is told, and belongs to its step.
TEST_F(Dialogs, ExchangesAndFlowsSearchForBoundariesOnOk) {
  new_data_set();
  form.current_data_set->systems.resize(1);
  form.current_data_set->resize_segments(2);
  TExchangesFlowsForm& editor = form.forms().exchanges_flows;
  ui.in_form = [&] {
    editor.InsertRowButtonClick(*editor.panels()[TExchangesFlowsForm::function_grid]);
    editor_panel& pairs = *editor.panels()[TExchangesFlowsForm::pair_grid];
    editor.InsertRowButtonClick(pairs);
    pairs.table.enter(0, 0, "2");
  };
  const auto boundaries = [&] { return form.current_data_set->systems[0].boundaries.size(); };
  for (const auto open : {&TPreveskMainForm::ExchangesItemClick, &TPreveskMainForm::FlowsItemClick}) {
    ui.form_result = false;
    (form.*open)();
    EXPECT_EQ(boundaries(), 0U);
    ui.form_result = true;
    (form.*open)();
    EXPECT_EQ(boundaries(), 1U);
    EXPECT_EQ(ui.lines, lines{"1 1 boundary added: segment 2 (Vesk Segment), 1 system"});
    for (int step = 0; step < 3; ++step) form.undo();
    EXPECT_EQ(boundaries(), 0U);
    ui.clear_info_lines();
  }
  EXPECT_EQ(ui.forms, (lines{"Exchanges", "Exchanges", "Flows", "Flows"}));
  EXPECT_TRUE(form.current_data_set->flow_fields[0].functions.empty());
}

} // namespace
} // namespace vesk
