// The commands that show a dialog.
#include "app/main_form.h"

namespace vesk {

void TPreveskMainForm::edit(form_id form, void (TPreveskMainForm::*on_ok)(), bool exchange_mode) {
  if (!current_data_set) return;
  commit_snapshot();
  if (!ui_.show_form(form, exchange_mode)) return restore_snapshot();
  if (on_ok) (this->*on_ok)();
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
  ui_.show_form(form_id::TEditProjectForm, false);
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
