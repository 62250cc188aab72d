// The commands that show a dialog.
#include "app/main_form.h"

#include <utility>

namespace vesk {

namespace {

// What a dialog is for, in the label of a step.
std::string_view words_for(form_id form) {
  switch (form) {
  case form_id::TParametersForm: return "data set";
  case form_id::TSystemForm: return "systems";
  case form_id::TSegmentForm: return "segments";
  case form_id::TParameterForm: return "parameters";
  case form_id::TConstantsForm: return "constants";
  case form_id::TExchangesFlowsForm: return "exchanges and flows";
  case form_id::TLoadsForm: return "loads";
  case form_id::TBoundaryForm: return "boundaries";
  case form_id::TTimeFunctionsForm: return "time functions";
  case form_id::TPrintIntervalForm: return "print intervals";
  case form_id::TTimeStepForm: return "time steps";
  case form_id::TOutputControlForm: return "output control";
  case form_id::TEditProjectForm: return "project files";
  case form_id::TAboutBox:
  case form_id::TPreferenceConfigurationForm: break; // change no data set
  }
  return {};
}

} // namespace

// A dialog's own steps can be undone in it. After a Cancel they are still there, behind the step of the Cancel itself.
// What follows an OK belongs to the last of them; a dialog that adds none is one step.
void TPreveskMainForm::edit(form_id form, void (TPreveskMainForm::*on_ok)(), bool exchange_mode) {
  if (!current_data_set) return;
  commit_snapshot();
  steps_.begin_editing();
  const bool by_ok = ui_.show_form(form, exchange_mode);
  const bool has_steps = steps_.has_edits();
  steps_.end_editing();
  document edited = present();
  if (!by_ok)
    restore_snapshot();
  else if (on_ok)
    (this->*on_ok)();
  if (*backup_data_set == (by_ok ? *current_data_set : edited.data_set)) return update_menus();
  if (!by_ok) return add_step(std::move(edited), "Cancel " + std::string(words_for(form)));
  if (has_steps) return update_menus();
  edited.data_set = *backup_data_set;
  add_step(std::move(edited), "Edit " + std::string(words_for(form)));
}

void TPreveskMainForm::update_menus_and_caption() {
  update_menus();
  update_caption();
}

void TPreveskMainForm::find_boundaries() {
  if (current_data_set) current_data_set->find_boundaries();
}

void TPreveskMainForm::ParameterizationItemClick() {
  take_present_catalogue(); // its tables may have changed since the data set was read
  edit(form_id::TParametersForm, &TPreveskMainForm::update_menus_and_caption);
}

void TPreveskMainForm::SystemsItemClick() {
  edit(form_id::TSystemForm);
}

void TPreveskMainForm::SegmentsItemClick() {
  edit(form_id::TSegmentForm);
}

void TPreveskMainForm::ParametersItemClick() {
  edit(form_id::TParameterForm);
}

void TPreveskMainForm::ConstantsItemClick() {
  edit(form_id::TConstantsForm);
}

void TPreveskMainForm::ExchangesItemClick() {
  edit(form_id::TExchangesFlowsForm, &TPreveskMainForm::find_boundaries, true);
}

void TPreveskMainForm::FlowsItemClick() {
  edit(form_id::TExchangesFlowsForm, &TPreveskMainForm::find_boundaries, false);
}

void TPreveskMainForm::LoadsItemClick() {
  edit(form_id::TLoadsForm);
}

void TPreveskMainForm::BoundariesItemClick() {
  edit(form_id::TBoundaryForm);
}

void TPreveskMainForm::TimeFunctionsItemClick() {
  edit(form_id::TTimeFunctionsForm);
}

void TPreveskMainForm::PrintIntervalItemClick() {
  edit(form_id::TPrintIntervalForm);
}

void TPreveskMainForm::TimestepItemClick() {
  edit(form_id::TTimeStepForm, &TPreveskMainForm::update_menus);
}

void TPreveskMainForm::OutputcontrolItemClick() {
  edit(form_id::TOutputControlForm);
}

void TPreveskMainForm::EditProjectItemClick() {
  if (!current_data_set) return;
  document before = present();
  ui_.show_form(form_id::TEditProjectForm, false); // edits in place, whatever closes it
  if (!(before.data_set.project_files == current_data_set->project_files))
    add_step(std::move(before), "Edit " + std::string(words_for(form_id::TEditProjectForm)));
  update_menus();
}

void TPreveskMainForm::PreferencesItemClick() {
  ui_.show_form(form_id::TPreferenceConfigurationForm, false);
  if (settings.RunTimeGridAlwaysVisible)
    ui_.show_results_grid(true);
  else if (!active_thread)
    ui_.show_results_grid(false);
  update_menus();
}

void TPreveskMainForm::AboutItemClick() {
  ui_.show_form(form_id::TAboutBox, false);
}

void TPreveskMainForm::ExitItemClick() {
  ui_.close_main_window();
}

void TPreveskMainForm::FennExitItemClick() {
  ui_.close_main_window();
}

} // namespace vesk
