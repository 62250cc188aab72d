#include "app/commands.h"

#include "app/main_form.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace vesk {

namespace {

using enum command_condition;
using form = TPreveskMainForm;

constexpr run_face idle_face{4, "Execute Model", "&Execute", "&Execute VESK Model"};
constexpr run_face running_face{19, "Cancel Model Execution", "Canc&el", "Canc&el"};

constexpr command_row rows[] = {
    // Menus.
    {"FileItem", unmanaged},
    {"ProjectItem", unmanaged},
    {"ModelItem", has_data},
    {"DataSetItem", has_data},
    {"PostProcessingItem", unmanaged},
    {"AdministrationItem", unmanaged},
    {"HelpItem", unmanaged},
    {"DocumentationItem", unmanaged},
    {"FennFileItem", unmanaged},
    {"FennModelItem", unmanaged},
    {"FennHelpItem", unmanaged},

    // Files and projects.
    {"NewItem", unmanaged, &form::NewItemClick},
    {"FileNewButton", unmanaged, &form::NewItemClick},
    {"OpenItem", unmanaged, &form::OpenItemClick},
    {"FileOpenButton", unmanaged, &form::OpenItemClick},
    {"RecentFilesItem", unmanaged},
    {"OpenResultsItem", unmanaged, &form::OpenResultsItemClick},
    {"SaveItem", has_data, &form::SaveItemClick},
    {"FileSaveButton", has_data, &form::SaveItemClick},
    {"SaveasItem", has_data, &form::SaveasItemClick},
    {"KeptWorkItem", unmanaged, &form::KeptWorkItemClick},
    {"ImportItem", idle, &form::ImportItemClick},
    {"ExportItem", idle_and_data, &form::ExportItemClick},
    {"OpenProjectItem", always, &form::OpenProjectItemClick},
    {"FennOpenProjectItem", unmanaged, &form::OpenProjectItemClick},
    {"EditProjectItem", has_data, &form::EditProjectItemClick},
    {"ExectutealldeferredqueriesItem", has_data, &form::ExectutealldeferredqueriesItemClick},
    {"Setdatabasefolder1", unmanaged, &form::Setdatabasefolder1Click},
    {"PreveskPreferencesItem", unmanaged, &form::PreferencesItemClick},
    {"PreferencesItem", unmanaged, &form::PreferencesItemClick},
    {"ExitItem", unmanaged, &form::ExitItemClick},
    {"FennExitItem", unmanaged, &form::FennExitItemClick},

    // Undo.
    {"EditItem", unmanaged},
    {"UndoItem", can_undo, &form::UndoItemClick},
    {"RedoItem", can_redo, &form::RedoItemClick},

    // Editors.
    {"ParameterizationItem", has_data, &form::ParameterizationItemClick},
    {"ParameterizationButton", has_data, &form::ParameterizationItemClick},
    {"SystemsItem", ready, &form::SystemsItemClick},
    {"SystemsToolButton", ready, &form::SystemsItemClick},
    {"SegmentsItem", ready, &form::SegmentsItemClick},
    {"SegmentsToolButton", ready, &form::SegmentsItemClick},
    {"ParametersItem", ready, &form::ParametersItemClick},
    {"ParametersToolButton", ready, &form::ParametersItemClick},
    {"ConstantsItem", ready, &form::ConstantsItemClick},
    {"ConstantsToolButton", ready, &form::ConstantsItemClick},
    {"ExchangesItem", ready, &form::ExchangesItemClick},
    {"ExchangesToolButton", ready, &form::ExchangesItemClick},
    {"FlowsItem", ready, &form::FlowsItemClick},
    {"FlowsToolButton", ready, &form::FlowsItemClick},
    {"LoadsItem", ready, &form::LoadsItemClick},
    {"LoadsToolButton", ready, &form::LoadsItemClick},
    {"BoundariesItem", ready, &form::BoundariesItemClick},
    {"BoundariesToolButton", ready, &form::BoundariesItemClick},
    {"TimeFunctionsItem", unmanaged, &form::TimeFunctionsItemClick}, // follows its menu, unlike its button
    {"TimeFunctionsToolButton", ready, &form::TimeFunctionsItemClick},
    {"PrintIntervalItem", ready, &form::PrintIntervalItemClick},
    {"PrintIntervalToolButton", ready, &form::PrintIntervalItemClick},
    {"TimestepItem", ready, &form::TimestepItemClick}, // next to the print intervals, with the same condition
    {"OutputcontrolMenuItem", ready, &form::OutputcontrolItemClick},
    {"OutputControlToolButton", ready, &form::OutputcontrolItemClick},

    // Running.
    {"RunModelButton", ready_or_running, &form::RunModelButtonClick},
    {"ExecuteModelItem", ready_or_running, &form::RunModelButtonClick},
    {"FennRunModelItem", ready_or_running, &form::RunModelButtonClick},
    {"ImportNetworkButton", has_model, &form::ImportNetworkButtonClick},
    {"ImportNetworkItem", has_model},
    {"NetworkItem", has_data, &form::NetworkItemClick},
    {"ValidateInputItem", has_model, &form::ValidateInputItemClick},
    {"ResultsItem", unmanaged, &form::ResultsItemClick},

    // Outside programs.
    {"LoadPostProcessorItem", unmanaged, &form::LoadPostProcessorItemClick},
    {"PostProcessorToolButton", unmanaged, &form::LoadPostProcessorItemClick},
    {"FennGraphicalPostProcessorItem", unmanaged, &form::LoadPostProcessorItemClick},
    {"HAVLEPostProcessorToolButton", unmanaged, &form::HAVLEPostProcessorToolButtonClick},
    {"FennPreveskItem", unmanaged, &form::FennPreveskItemClick},
    {"Checkforupdates1", idle, &form::Checkforupdates1Click},

    // Administration and help.
    {"EnableloggingItem", unmanaged, &form::EnableloggingItemClick},
    {"EnabledebugmodeItem", unmanaged, &form::EnabledebugmodeItemClick},
    {"DictionaryItem", unmanaged, &form::DictionaryItemClick},
    {"ContentsItem", unmanaged, &form::ContentsItemClick},
    {"FennContentsItem", unmanaged, &form::ContentsItemClick},
    {"AboutItem", unmanaged, &form::AboutItemClick},
    {"FennAboutItem", unmanaged, &form::AboutItemClick},
};

constexpr menu_row main_menu_rows[] = {
    {0, "FileItem", "&File"},
    {1, "NewItem", "&New", "Ctrl+N"},
    {1, "OpenItem", "&Open...", "Ctrl+O"},
    {1, "RecentFilesItem", "Open recen&t"},
    {1, "OpenResultsItem", "Open &results..."},
    {1, "SaveItem", "&Save", "Ctrl+S"},
    {1, "SaveasItem", "Save &as...", "Ctrl+Shift+S"},
    {1, "KeptWorkItem", "&Unsaved work and earlier versions..."},
    {1, "", "-"},
    {1, "ImportItem", "&Import..."},
    {1, "ExportItem", "&Export..."},
    {1, "", "-"},
    {1, "ExectutealldeferredqueriesItem", "Execute all deferred &queries"},
    {1, "Setdatabasefolder1", "Set &database directory..."},
    {1, "PreveskPreferencesItem", "&Preferences..."},
    {1, "", "-"},
    {1, "ExitItem", "E&xit", "Ctrl+Q"},
    {0, "EditItem", "&Edit"},
    {1, "UndoItem", "&Undo", "Ctrl+Z"},
    {1, "RedoItem", "&Redo", "Ctrl+Shift+Z"},
    {0, "ProjectItem", "&Project"},
    {1, "OpenProjectItem", "&Open project..."},
    {1, "EditProjectItem", "&Edit project..."},
    {0, "DataSetItem", "&Data"},
    {1, "ParameterizationItem", "&Data set..."},
    {1, "SystemsItem", "S&ystems..."},
    {1, "SegmentsItem", "&Segments..."},
    {1, "ParametersItem", "&Parameters..."},
    {1, "ConstantsItem", "&Constants..."},
    {1, "", "-"},
    {1, "ExchangesItem", "&Exchanges..."},
    {1, "FlowsItem", "&Flows..."},
    {1, "LoadsItem", "&Loads..."},
    {1, "BoundariesItem", "&Boundaries..."},
    {1, "TimeFunctionsItem", "&Time functions..."},
    {1, "", "-"},
    {1, "PrintIntervalItem", "Print &intervals..."},
    {1, "TimestepItem", "Ti&me steps..."},
    {1, "OutputcontrolMenuItem", "&Output control..."},
    {0, "ModelItem", "&Model"},
    {1, "ExecuteModelItem", "&Execute", "F5"},
    {1, "ValidateInputItem", "&Validity check"},
    {1, "ImportNetworkItem", "Import &network..."},
    {1, "NetworkItem", "Net&work", "F7"},
    {1, "ResultsItem", "&Results...", "Ctrl+R"},
    {0, "PostProcessingItem", "P&ost-processing"},
    {1, "LoadPostProcessorItem", "&Graphical post-processor"},
    {0, "AdministrationItem", "&Administration"},
    {1, "EnableloggingItem", "Enable &logging", "Ctrl+L"},
    {1, "EnabledebugmodeItem", "Enable &debug mode", "Ctrl+D"},
    {1, "DictionaryItem", "Di&ctionary..."},
    {0, "HelpItem", "&Help"},
    {1, "ContentsItem", "&Contents", "F1"},
    {1, "DocumentationItem", "&Documentation"},
    {1, "Checkforupdates1", "Check for &updates..."},
    {1, "AboutItem", "&About..."},
};

constexpr menu_row fenn_menu_rows[] = {
    {0, "FennFileItem", "&File"},
    {1, "FennOpenProjectItem", "&Open project..."},
    {1, "PreferencesItem", "&Preferences..."},
    {1, "FennExitItem", "E&xit"},
    {0, "FennModelItem", "&Model"},
    {1, "FennPreveskItem", "&VESK"},
    {1, "FennRunModelItem", "&Execute VESK Model"},
    {1, "FennGraphicalPostProcessorItem", "&Graphical post-processor"},
    {0, "FennHelpItem", "&Help"},
    {1, "FennContentsItem", "&Contents"},
    {1, "FennAboutItem", "&About..."},
};

constexpr tool_row tool_bar_rows[] = {
    {"FileNewButton", 0, "Create new VESK input data"},
    {"FileOpenButton", 1, "Edit previously created VESK input data"},
    {"FileSaveButton", 2, "Write VESK input data to disk"},
    {"", 0},
    {"ImportNetworkButton", 3, "Import Network"},
    {"RunModelButton", idle_face.image, "Execute model"},
    {"", 0},
    {"ParameterizationButton", 5, "Data set"},
    {"SystemsToolButton", 6, "Systems"},
    {"SegmentsToolButton", 7, "Segments"},
    {"ParametersToolButton", 8, "Segment parameters"},
    {"ConstantsToolButton", 9, "Constants"},
    {"ExchangesToolButton", 10, "Exchanges"},
    {"FlowsToolButton", 11, "Flows"},
    {"LoadsToolButton", 12, "Loads"},
    {"BoundariesToolButton", 13, "Boundaries"},
    {"TimeFunctionsToolButton", 14, "Time functions"},
    {"PrintIntervalToolButton", 15, "Print intervals"},
    {"OutputControlToolButton", 16, "Output control"},
    {"", 0},
    {"PostProcessorToolButton", 17, "Graphical post-processor"},
    {"HAVLEPostProcessorToolButton", 18, "HAVLE post-processor"},
};

} // namespace

bool is_enabled(command_condition condition, const command_conditions& now) {
  switch (condition) {
  case unmanaged:
  case always: return true;
  case idle: return now.idle;
  case idle_and_data: return now.idle && now.has_data;
  case has_data: return now.has_data;
  case has_model: return now.has_model;
  case can_undo: return !now.undo.empty();
  case can_redo: return !now.redo.empty();
  case ready: return now.ready;
  case ready_or_running: return now.ready || now.running;
  }
  return false;
}

const run_face& face_of_run_controls(bool running) {
  return running ? running_face : idle_face;
}

namespace {

step_words words_of(const char* caption, const std::string& step, const char* with_step, const char* without) {
  if (step.empty()) return {caption, without};
  step_words words{std::string(caption) + " ", with_step + step};
  for (const char c : step) words.caption.append(c == '&' ? 2 : 1, c);
  return words;
}

} // namespace

step_words undo_words(const command_conditions& now) {
  return words_of("&Undo", now.undo, "Take back: ", "Nothing to undo");
}

step_words redo_words(const command_conditions& now) {
  return words_of("&Redo", now.redo, "Repeat: ", "Nothing to redo");
}

std::span<const command_row> command_table() {
  return rows;
}

const command_row& find_command(std::string_view name) {
  const auto* found =
      std::find_if(std::begin(rows), std::end(rows), [name](const auto& row) { return row.name == name; });
  assert(found != std::end(rows));
  return *found;
}

std::span<const menu_row> main_menu() {
  return main_menu_rows;
}
std::span<const menu_row> fenn_menu() {
  return fenn_menu_rows;
}
std::span<const tool_row> tool_bar() {
  return tool_bar_rows;
}

} // namespace vesk
