// The commands that show a dialog.
#include "app/forms.h"
#include "app/main_form.h"
#include "dataset/boundary_changes.h"
#include "dataset/same_content.h"

#include <utility>

namespace vesk {

TFillCalculateForm& TPreveskMainForm::fill_calculate_form() {
  return forms_->fill_calculate;
}

TImportTimeSeriesForm& TPreveskMainForm::import_form() {
  return forms_->import_time_series;
}

// A dialog's own steps can be undone in it. After Cancel they remain in the history, before the step of the Cancel
// itself. Work after the dialog, such as finding boundaries, belongs to its last step; a dialog without own steps is
// one step.
void TPreveskMainForm::edit(form& editor, void (TPreveskMainForm::*on_ok)(), void (TPreveskMainForm::*on_close)()) {
  if (!current_data_set) return;
  commit_snapshot();
  documents_.steps().begin_editing();
  const bool by_ok = ui_.show_form(editor);
  const bool has_steps = documents_.steps().has_edits();
  documents_.steps().end_editing();
  document edited = documents_.present();
  if (!by_ok)
    restore_snapshot();
  else if (on_ok)
    (this->*on_ok)();
  if (on_close) (this->*on_close)();
  const bool cancels_edits = !by_ok && !same_content(*backup_data_set, edited.data_set);
  const bool is_changed = !same_content(*backup_data_set, *current_data_set);
  if (cancels_edits) {
    documents_.add_step(std::move(edited), "Cancel " + editor.caption());
  } else if (is_changed && !has_steps) {
    edited.data_set = *backup_data_set;
    documents_.add_step(std::move(edited), "Edit " + editor.caption());
  }
  update_menus();
}

void TPreveskMainForm::update_menus_and_caption() {
  update_menus();
  update_caption();
}

void TPreveskMainForm::find_boundaries() {
  if (!current_data_set) return;
  const prevesk_dataset_data_type before = *current_data_set;
  current_data_set->find_boundaries();
  const std::string line = in_words(changes_of_boundaries(before, *current_data_set), *current_data_set);
  if (!line.empty()) ui_.add_info_line(line, icon_note);
}

void TPreveskMainForm::give_default_points() {
  current_data_set->give_default_points();
}

void TPreveskMainForm::ParameterizationItemClick() {
  documents_.take_present_catalogue(); // its tables may have changed since the data set was read
  edit(forms_->data_set, &TPreveskMainForm::update_menus_and_caption, &TPreveskMainForm::give_default_points);
  if (forms_->data_set.reads_hydrodynamic_file()) start_read_hyd_file();
}

void TPreveskMainForm::SystemsItemClick() {
  edit(forms_->systems);
}

void TPreveskMainForm::SegmentsItemClick() {
  edit(forms_->segments);
}

void TPreveskMainForm::ParametersItemClick() {
  edit(forms_->parameters);
}

void TPreveskMainForm::ConstantsItemClick() {
  edit(forms_->constants);
}

void TPreveskMainForm::ExchangesItemClick() {
  forms_->exchanges_flows.exchange_mode = true;
  edit(forms_->exchanges_flows, &TPreveskMainForm::find_boundaries);
}

void TPreveskMainForm::FlowsItemClick() {
  forms_->exchanges_flows.exchange_mode = false;
  edit(forms_->exchanges_flows, &TPreveskMainForm::find_boundaries);
}

void TPreveskMainForm::LoadsItemClick() {
  edit(forms_->loads);
}

void TPreveskMainForm::BoundariesItemClick() {
  edit(forms_->boundaries);
}

void TPreveskMainForm::TimeFunctionsItemClick() {
  edit(forms_->time_functions);
}

void TPreveskMainForm::PrintIntervalItemClick() {
  edit(forms_->print_interval);
}

void TPreveskMainForm::TimestepItemClick() {
  edit(forms_->time_step, &TPreveskMainForm::update_menus);
}

void TPreveskMainForm::OutputcontrolItemClick() {
  edit(forms_->output_control);
}

void TPreveskMainForm::NetworkItemClick() {
  if (current_data_set) ui_.show_network();
}

void TPreveskMainForm::EditProjectItemClick() {
  if (!current_data_set) return;
  documents_.steps().begin_editing();
  ui_.show_form(forms_->project); // edits in place, however it is closed; each change is a step
  documents_.steps().end_editing();
  update_menus();
}

void TPreveskMainForm::KeptWorkItemClick() {
  TKeptWorkForm& kept = forms_->kept_work;
  kept.files = documents_.kept_files();
  kept.selected = 0;
  if (ui_.show_form(kept) && kept.selected < kept.files.size())
    documents_.open_kept(kept_file(kept.files[kept.selected]));
}

void TPreveskMainForm::PreferencesItemClick() {
  ui_.show_form(forms_->preferences);
  if (settings.RunTimeGridAlwaysVisible)
    ui_.show_results_grid(true);
  else if (!active_thread)
    ui_.show_results_grid(false);
  update_menus();
}

void TPreveskMainForm::AboutItemClick() {
  forms_->about.engine = runs_.engine_in_words();
  ui_.show_form(forms_->about);
}

void TPreveskMainForm::ExitItemClick() {
  ui_.close_main_window();
}

void TPreveskMainForm::FennExitItemClick() {
  ui_.close_main_window();
}

} // namespace vesk
