#include "app/edit_project_form.h"
#include "app/main_form.h"
#include "app/preferences_form.h"
#include "noting_interface.h"
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
  TEditProjectForm project{form, ui};

  lines rows() const {
    lines all;
    for (std::size_t row = 0; row < project.row_count(); ++row) all.push_back(project.cell(row));
    return all;
  }
};

TEST_F(Dialogs, PreferencesShowAndSetBothSwitches) {
  TPreferenceConfigurationForm preferences(form);
  form.EnabledebugmodeItemClick();
  preferences.FormShow();
  EXPECT_FALSE(preferences.LoggingEnabledCheckBox);
  EXPECT_EQ(preferences.diagnostic_levels[preferences.DiagnosticLevelComboBox], "Full");
  preferences.LoggingEnabledCheckBox = true;
  preferences.DiagnosticLevelComboBox = 1;
  EXPECT_EQ(form.diagnostic_level(), 2); // until OK
  preferences.OKButtonClick();
  EXPECT_TRUE(form.logging_enabled());
  EXPECT_EQ(form.diagnostic_level(), 1);
  form.set_diagnostic_level(9); // as an engine may
  preferences.FormShow();
  preferences.OKButtonClick();
  EXPECT_EQ(form.diagnostic_level(), 9);
}

TEST_F(Dialogs, TheProjectEditorWorksOnTheDataSetsList) {
  EXPECT_EQ(project.InsertRowButtonClick(0), 0U); // no data set
  EXPECT_EQ(project.row_count(), 0U);
  form.current_data_set = std::make_unique<prevesk_dataset_data_type>();
  ui.file = "/rivers/map.shp";
  project.BrowseButtonClick(0); // an empty list
  EXPECT_EQ(project.InsertRowButtonClick(3), 0U);
  project.BrowseButtonClick(0);
  EXPECT_EQ(project.move_down(0), 1U); // out of the last row
  project.set_cell(1, std::string(300, 'x'));
  EXPECT_EQ(project.InsertRowButtonClick(1), 1U);
  EXPECT_EQ(rows(), (lines{"/rivers/map.shp", "", std::string(255, 'x')}));
  EXPECT_EQ(project.move_down(0), 1U);
  EXPECT_EQ(project.DeleteRowButtonClick(2), 1U);
  EXPECT_EQ(project.DeleteRowButtonClick(0), 0U);
  EXPECT_EQ(rows(), lines{""});
  EXPECT_EQ(project.DeleteRowButtonClick(5), 5U);
}

TEST_F(Dialogs, TheProjectEditorRefusesDataFilesFirstAndThenBlanks) {
  form.current_data_set = std::make_unique<prevesk_dataset_data_type>();
  form.current_data_set->project_files = {"", "sub.dir\\a.Vki"};
  EXPECT_TRUE(project.FormCloseQuery(true));
  EXPECT_FALSE(project.FormCloseQuery(false));
  EXPECT_EQ(ui.take_boxes(), lines{"Error: VESK Input Files (VKI) may not be specified"});
  project.set_cell(1, "a.db");
  EXPECT_FALSE(project.FormCloseQuery(false));
  EXPECT_EQ(ui.take_boxes(), lines{"Error: Blank filenames are not allowed"});
  project.set_cell(0, "vki");
  EXPECT_TRUE(project.FormCloseQuery(false));
  EXPECT_EQ(ui.boxes, lines{});
}

} // namespace
} // namespace vesk
