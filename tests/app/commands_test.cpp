#include "app/commands.h"
#include "app/main_form.h"
#include "behaviour_catalogue.h"
#include "noting_interface.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

namespace vesk {
namespace {

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

TEST(Commands, FollowTheirConditions) {
  const command_conditions states[] = {{true, false, false, false}, {false, false, false, false, true},
                                       {true, true, false, false},  {false, true, false, false, false},
                                       {true, true, true, false},   {true, true, true, true},
                                       {false, true, true, true}};
  struct {
    const char* names;
    const char* enabled; // in each state
  } const table[] = {
      {"Checkforupdates1 ImportItem", "1010110"},
      {"ExportItem", "0010110"},
      {"ParameterizationItem ModelItem ParameterizationButton DataSetItem ExectutealldeferredqueriesItem "
       "FileSaveButton "
       "SaveItem SaveasItem EditProjectItem NetworkItem",
       "0011111"},
      {"OpenProjectItem", "1111111"},
      {"ImportNetworkButton ImportNetworkItem ValidateInputItem", "0000111"},
      {"LoadsItem LoadsToolButton SystemsItem SystemsToolButton SegmentsItem SegmentsToolButton PrintIntervalItem "
       "PrintIntervalToolButton TimestepItem ParametersItem ParametersToolButton ConstantsItem ConstantsToolButton "
       "TimeFunctionsToolButton OutputControlToolButton OutputcontrolMenuItem ExchangesItem ExchangesToolButton "
       "FlowsItem FlowsToolButton BoundariesItem BoundariesToolButton",
       "0000011"},
      {"RunModelButton ExecuteModelItem FennRunModelItem", "0100011"}, // to cancel, whatever the data set
  };
  command_conditions steps;
  EXPECT_EQ(undo_words(steps).caption, "&Undo");
  EXPECT_EQ(redo_words(steps).tool_tip, "Nothing to redo");
  for (const auto& [step, item] :
       {std::pair(&command_conditions::undo, "UndoItem"), {&command_conditions::redo, "RedoItem"}}) {
    EXPECT_FALSE(is_enabled(find_command(item).condition, steps));
    steps.*step = "Open this & that.vki";
    EXPECT_TRUE(is_enabled(find_command(item).condition, steps));
  }
  EXPECT_EQ(undo_words(steps).caption, "&Undo Open this && that.vki");
  EXPECT_EQ(redo_words(steps).caption, "&Redo Open this && that.vki");
  EXPECT_EQ(undo_words(steps).tool_tip, "Take back: Open this & that.vki");
  std::set<std::string_view> managed;
  for (const command_row& row : command_table())
    if (row.condition != command_condition::unmanaged && row.name != "UndoItem" && row.name != "RedoItem")
      managed.insert(row.name);
  for (const auto& [names, enabled] : table)
    for (const std::string& name : words(names)) {
      EXPECT_EQ(managed.erase(name), 1U) << name;
      for (std::size_t i = 0; i < std::size(states); ++i)
        EXPECT_EQ(is_enabled(find_command(name).condition, states[i]), enabled[i] == '1') << name << " in " << i;
    }
  EXPECT_TRUE(managed.empty());
}

TEST(Commands, ControlsShareTheirHandlers) {
  const char* const groups[] = {"NewItem FileNewButton",
                                "OpenItem FileOpenButton",
                                "SaveItem FileSaveButton",
                                "OpenProjectItem FennOpenProjectItem",
                                "PreveskPreferencesItem PreferencesItem",
                                "RunModelButton ExecuteModelItem FennRunModelItem",
                                "LoadPostProcessorItem PostProcessorToolButton FennGraphicalPostProcessorItem",
                                "AboutItem FennAboutItem"};
  for (const char* group : groups)
    for (const std::string& name : words(group)) {
      EXPECT_NE(find_command(name).handler, nullptr) << name;
      EXPECT_EQ(find_command(name).handler, find_command(words(group)[0]).handler) << name;
    }
  EXPECT_EQ(find_command("ImportNetworkItem").handler, nullptr);
}

TEST(Commands, EachControlOccursOnce) {
  std::multiset<std::string_view> placed;
  for (const auto& menu : {main_menu(), fenn_menu()})
    for (const menu_row& row : menu)
      if (row.caption != "-") placed.insert(row.name);
  for (const tool_row& row : tool_bar())
    if (!row.name.empty()) placed.insert(row.name);
  for (const command_row& row : command_table()) EXPECT_EQ(placed.count(row.name), 1U) << row.name;
  EXPECT_EQ(placed.size(), command_table().size());
  std::map<std::string_view, std::string_view> shortcuts;
  for (const menu_row& row : main_menu()) {
    if (row.shortcut.empty()) continue;
    EXPECT_TRUE(shortcuts.try_emplace(row.shortcut, row.name).second) << row.shortcut;
  }
  EXPECT_EQ(shortcuts["Ctrl+L"], "EnableloggingItem");
  EXPECT_EQ(shortcuts["Ctrl+D"], "EnabledebugmodeItem");
  EXPECT_EQ(face_of_run_controls(true).hint, "Cancel Model Execution");
  EXPECT_EQ(face_of_run_controls(false).fenn, "&Execute VESK Model");
}

class CommandHandlers : public testing::Test {
protected:
  CommandHandlers() {
    write_behaviour_catalogue(folder.path);
    form.set_database_folder(folder.path);
  }
  void press(const std::string& control) { (form.*find_command(control).handler)(); }

  temporary_folder folder;
  noting_interface ui;
  TPreveskMainForm form{ui, folder.path / "settings.ini"};
};

TEST_F(CommandHandlers, EditorsShowTheirFormsAndACancelRestores) {
  struct {
    const char* controls;
    const char* shown;
  } const editors[] = {{"ParameterizationItem ParameterizationButton", "Parameters"},
                       {"SystemsItem SystemsToolButton", "System Data"},
                       {"SegmentsItem SegmentsToolButton", "Segments"},
                       {"ParametersItem ParametersToolButton", "Parameter data"},
                       {"ConstantsItem ConstantsToolButton", "Constants Data"},
                       {"ExchangesItem ExchangesToolButton", "Exchanges"},
                       {"FlowsItem FlowsToolButton", "Flows"},
                       {"LoadsItem LoadsToolButton", "Loads"},
                       {"BoundariesItem BoundariesToolButton", "Boundaries"},
                       {"TimeFunctionsItem TimeFunctionsToolButton", "Time Functions"},
                       {"PrintIntervalItem PrintIntervalToolButton", "Print Interval"},
                       {"OutputcontrolMenuItem OutputControlToolButton", "Output Control"}};
  press("SystemsItem"); // without a data set nothing is shown
  EXPECT_TRUE(ui.forms.empty());
  press("NewItem");
  ui.in_form = [this] { form.current_data_set->comments += "edited"; };
  for (const auto& editor : editors)
    for (const std::string& control : words(editor.controls))
      for (const bool ok : {false, true}) {
        form.current_data_set->comments.clear();
        ui.forms.clear();
        ui.form_result = ok;
        press(control);
        EXPECT_EQ(ui.forms, std::vector<std::string>{editor.shown}) << control;
        EXPECT_EQ(form.current_data_set->comments, ok ? "edited" : "") << control;
      }
  form.TimestepItemClick();
  EXPECT_EQ(ui.forms.back(), "Time Step");
}

TEST_F(CommandHandlers, WhatFollowsAnEditorsOk) {
  press("NewItem");
  ui.caption.clear();
  ui.in_form = [this] {
    form.current_data_set->description = "River";
    form.current_data_set->end_date = form.current_data_set->seed_date + 1;
  };
  press("ParameterizationItem");
  EXPECT_TRUE(ui.commands.ready);
  EXPECT_NE(ui.caption.find("(River, "), std::string::npos);

  const auto boundaries = [this] { return form.current_data_set->systems[0].boundaries.size(); };
  for (const char* control : {"ExchangesItem", "FlowsItem"}) {
    form.current_data_set->resize_segments(1);
    form.current_data_set->systems.edit(0).boundaries.push_back({}); // without a reason to be
    ui.form_result = false;
    press(control);
    EXPECT_EQ(boundaries(), 1U) << control;
    ui.form_result = true;
    press(control);
    EXPECT_EQ(boundaries(), 0U) << control;
  }
  ui.commands = {};
  form.TimestepItemClick();
  EXPECT_TRUE(ui.commands.ready);
}

TEST_F(CommandHandlers, OtherDialogs) {
  press("NewItem");
  ui.form_result = false;
  ui.in_form = [this] { form.current_data_set->project_files.push_back("a.shp"); };
  press("EditProjectItem");
  EXPECT_EQ(form.current_data_set->project_files.size(), 1U); // no snapshot
  ui.in_form = {};
  press("AboutItem");
  press("FennPreveskItem");
  form.PreProcessorToolButtonClick();
  EXPECT_EQ(ui.forms, (std::vector<std::string>{"Related project files", "About Vesk"}));
  ui.shown.clear();
  press("PreferencesItem");
  form.settings.RunTimeGridAlwaysVisible = true;
  press("PreveskPreferencesItem");
  EXPECT_EQ(ui.shown, (std::vector<std::string>{"grid off", "grid on"}));
  press("ExitItem");
  EXPECT_TRUE(std::exchange(ui.closed, false));
  press("FennExitItem");
  EXPECT_TRUE(ui.closed);
}

TEST_F(CommandHandlers, DiagnosticsOnlySwitchOn) {
  for (int i = 0; i < 2; ++i) {
    press("EnableloggingItem");
    press("EnabledebugmodeItem");
    EXPECT_TRUE(form.logging_enabled());
    EXPECT_EQ(form.diagnostic_level(), 2);
  }
  press("DictionaryItem"); // cancelled
  ui.file = folder.file("gone/d.txt");
  press("DictionaryItem"); // cannot be opened: nothing is said
  EXPECT_EQ(ui.boxes.size(), 0U);
  ui.file = "/dev/full";
  press("DictionaryItem");
  EXPECT_EQ(ui.take_boxes(), std::vector<std::string>{"Error: Cannot write /dev/full: No space left on device."});
  ui.file = folder.file("d.txt");
  press("DictionaryItem");
  EXPECT_EQ(ui.boxes, std::vector<std::string>{"Complete: Dictionary written"});
  EXPECT_NE(folder.read("d.txt").find("\nNUMSEG\n\tDATAFUNC1\n\tnumber_of_segments\n\t\tnumseg :  (INTEGER)\n"),
            std::string::npos);
}

} // namespace
} // namespace vesk
