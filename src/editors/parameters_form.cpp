#include "editors/parameters_form.h"

#include "dataset/series.h"

#include <algorithm>
#include <tuple>

namespace vesk {

namespace {

// The fields for numbers, dates and times, and their members, in the order of writing back.
struct field_row {
  entry_field TParametersForm::*field;
  double prevesk_dataset_data_type::*member;
};

using form_type = TParametersForm;
using data_type = prevesk_dataset_data_type;

constexpr field_row field_rows[] = {
    {&form_type::StartDateField, &data_type::seed_date},
    {&form_type::StartTimeField, &data_type::seed_time},
    {&form_type::HydroSkipDateField, &data_type::skip_date},
    {&form_type::HydroSkipTimeField, &data_type::skip_time},
    {&form_type::EndDateField, &data_type::end_date},
    {&form_type::EndTimeField, &data_type::end_time},
    {&form_type::FractionOfMaxTimeStepEdit, &data_type::fraction_of_max_time_step},
    {&form_type::BedCompactionTimeStepField, &data_type::bed_compaction_time_step},
    {&form_type::MaxTimeStepField, &data_type::max_dt},
    {&form_type::MinTimeStepField, &data_type::min_dt},
};

std::string plural(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string with_plain_line_ends(const std::string& text) {
  std::string result;
  for (const char c : text)
    if (c != '\r') result += c;
  return result;
}

} // namespace

std::vector<entry_field*> TParametersForm::entry_fields() {
  std::vector<entry_field*> fields;
  for (const field_row& row : field_rows) fields.push_back(&(this->*row.field));
  return fields;
}

void TParametersForm::FormShow() {
  if (!host_.data_set()) return;
  saved_model_type_ = host_.data_set()->model_type;
  reinitialize_from_hyd_file_ = reads_hydrodynamic_file_ = comments_edited_ = was_replaced_ = asked_for_restart_ =
      false;
  shown_ = controls_of(*host_.data_set());
  static_cast<parameters_controls&>(*this) = shown_;
  show_numbers(true);
}

void TParametersForm::show_numbers(bool touched_too) {
  for (const field_row& row : field_rows)
    if (touched_too || !(this->*row.field).touched()) (this->*row.field).load(host_.data_set()->*row.member);
}

parameters_controls TParametersForm::controls_of(const data_type& data) {
  parameters_controls controls;
  controls.DatasetNameEdit = data.description;
  controls.CommentsMemo = with_plain_line_ends(data.comments);
  controls.HydrodynamicLinkageFileEdit = data.hydrodynamic_file;
  controls.NpsFileNameEdit = data.nps_file;
  controls.dynamic_bed_volume = data.bed_compaction_option;
  controls.NegativeSolutionAllowedCheckBox = data.negative_solution;
  controls.UseNpsFileCheckBox = data.use_nps_file;
  const bool known =
      data.flow_option == net_flows || data.flow_option == gross_flows || data.flow_option == kinematic_wave;
  controls.flow_option = known ? data.flow_option : hydrodynamic_linkage;
  controls.restart_option = std::min<std::uint32_t>(data.restart_option, neither_restart_button);
  controls.vesk_to_vesk_linkage = data.vesk_to_vesk_linkage_option == 1;
  if (data.catalogue())
    for (const catalogue_model& model : data.catalogue()->models) {
      if (model.model_id == data.model_type && controls.ModelTypeComboBox < 0)
        controls.ModelTypeComboBox = static_cast<int>(controls.model_names.size());
      controls.model_names.push_back(model.model_name);
    }
  controls.SolutionTypeComboBox = data.solution_techniques.empty() ? -1 : 0;
  for (const solution_technique_type& technique : data.solution_techniques) {
    if (static_cast<std::uint32_t>(technique.id) == data.solution_type)
      controls.SolutionTypeComboBox = static_cast<int>(controls.solution_names.size());
    controls.solution_names.push_back(technique.name);
  }
  return controls;
}

TParametersForm::enabled_controls TParametersForm::enabled() const {
  return {.nps_file = UseNpsFileCheckBox,
          .bed_compaction_time_step = dynamic_bed_volume,
          .hydrodynamic_file = flow_option == hydrodynamic_linkage,
          .ok = !host_.restart_file_is_loading()};
}

// Uses the value, not the rounded text of its field.
void TParametersForm::StartDateFieldChange() {
  if (StartDateField.refusal().empty()) HydroSkipDateField.follow(StartDateField.value());
}

void TParametersForm::StartTimeFieldChange() {
  if (StartTimeField.refusal().empty()) HydroSkipTimeField.follow(StartTimeField.value());
}

void TParametersForm::BrowseHydButtonClick() {
  const std::uint64_t generation = host_.generation();
  const auto name =
      host_.questions().ask_file({file_dialog::kind::open, {}, "Hydrodynamic Linkage Files|*.hyd", "hyd"});
  if (!name || host_.generation() != generation) return;
  const box_answer answer = host_.questions().message_box(
      "Initialize Segments and Boundaries?",
      "When setting the hydrodynamic linkage file you\r\nhave the option of reading the selected hydrodynamic\r\n"
      "linkage file and initializing the segments and boundaries\r\nbased on the selected file. Do you wish to "
      "reinitialize\r\nthe segments and boundaries by reading the selected file?",
      box_buttons::yes_no_cancel);
  if (answer == box_answer::cancel || !host_.data_set() || host_.generation() != generation) return;
  HydrodynamicLinkageFileEdit = *name;
  host_.data_set()->hydrodynamic_file = *name;
  reinitialize_from_hyd_file_ = answer == box_answer::yes;
}

void TParametersForm::BrowseNpsButtonClick() {
  if (const auto name =
          host_.questions().ask_file({file_dialog::kind::open, {}, "Non Point Source Files|*.nps", "nps"}))
    NpsFileNameEdit = *name;
}

void TParametersForm::LoadRestartFileButtonClick() {
  asked_for_restart_ = true;
  host_.start_load_restart_file();
}

// Controls that the user has changed keep their entries; all others show the new data set.
void TParametersForm::data_set_replaced() {
  if (!host_.data_set()) return;
  using controls = parameters_controls;
  constexpr std::tuple entered(
      &controls::DatasetNameEdit, &controls::CommentsMemo, &controls::HydrodynamicLinkageFileEdit,
      &controls::NpsFileNameEdit, &controls::ModelTypeComboBox, &controls::SolutionTypeComboBox,
      &controls::dynamic_bed_volume, &controls::NegativeSolutionAllowedCheckBox, &controls::UseNpsFileCheckBox,
      &controls::flow_option, &controls::restart_option, &controls::vesk_to_vesk_linkage);
  const controls fresh = controls_of(*host_.data_set());
  controls next = fresh;
  if (!comments_edited_) CommentsMemo = shown_.CommentsMemo; // an edit box may change white space
  const auto keep = [&](auto member) {
    if (this->*member != shown_.*member) next.*member = this->*member;
  };
  std::apply([&](auto... member) { (keep(member), ...); }, entered);
  if (fresh.model_names != model_names) next.ModelTypeComboBox = fresh.ModelTypeComboBox;
  if (fresh.solution_names != solution_names) next.SolutionTypeComboBox = fresh.SolutionTypeComboBox;
  static_cast<controls&>(*this) = std::move(next);
  shown_ = fresh;
  saved_model_type_ = host_.data_set()->model_type;
  was_replaced_ = true;
  show_numbers(false);
}

// By name: if two models share a name, the first is used.
std::uint32_t TParametersForm::chosen_model_type(const data_type& data) const {
  if (!data.catalogue() || ModelTypeComboBox < 0) return data.model_type;
  const auto& models = data.catalogue()->models;
  const std::string& name = model_names[static_cast<std::size_t>(ModelTypeComboBox)];
  const auto model = std::ranges::find(models, name, &catalogue_model::model_name);
  return model != models.end() ? model->model_id : data.model_type;
}

std::string TParametersForm::message() const {
  for (const field_row& row : field_rows)
    if (const entry_field& field = this->*row.field; !field.refusal().empty())
      return field.label + ": " + field.refusal() + ".";
  if (host_.restart_file_is_loading()) return "The restart file is being loaded.";
  const data_type* data = host_.data_set();
  if (data && chosen_model_type(*data) != saved_model_type_) {
    std::size_t loads = 0, boundaries = 0, constants = 0;
    for (const system_data_type& system : data->systems) {
      loads += system.loads.size();
      boundaries += system.boundaries.size();
    }
    for (const constant_group_data_type& group : data->constant_groups) constants += group.constants.size();
    return "OK drops the data of the present model: " + plural(data->systems.size(), "system", "systems") + ", " +
           plural(loads, "load", "loads") + ", " + plural(boundaries, "boundary", "boundaries") + ", " +
           plural(constants, "constant", "constants") + ".";
  }
  if (!was_replaced_) return {};
  return std::string(asked_for_restart_
                         ? "The restart file has been processed. See the result in the messages of the main window."
                         : "A job has replaced the data set.") +
         " Your entries were kept.";
}

bool TParametersForm::FormCloseQuery(bool by_ok) {
  if (by_ok) return OkButtonClick();
  if (!host_.restart_file_is_loading()) return true;
  host_.cancel_job();
  return false;
}

// Unchanged text is not written, since an edit box loses carriage returns; changed text keeps the line ends it had.
std::string TParametersForm::stored_comments(const data_type& data) const {
  if (!comments_edited_ || CommentsMemo == with_plain_line_ends(data.comments)) return data.comments;
  if (data.comments.find("\r\n") == std::string::npos) return CommentsMemo;
  std::string text;
  for (const char c : CommentsMemo) text += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return text;
}

// On a copy, so that a failure leaves the data set as it was.
bool TParametersForm::OkButtonClick() {
  data_type* data = host_.data_set();
  if (!data || !enabled().ok) return false;
  for (const field_row& row : field_rows)
    if (!(this->*row.field).refusal().empty()) return false;
  data_type next = *data;
  write_back(next);
  move_default_points(next, *data); // those of a period that the user had yet to enter would be outside the run
  *data = std::move(next);
  reads_hydrodynamic_file_ =
      data->flow_option == hydrodynamic_linkage && !data->hydrodynamic_file.empty() && reinitialize_from_hyd_file_;
  return true;
}

void TParametersForm::write_back(data_type& data) const {
  data.comments = stored_comments(data);
  data.description = DatasetNameEdit;
  data.hydrodynamic_file = HydrodynamicLinkageFileEdit;
  data.nps_file = NpsFileNameEdit;
  for (const field_row& row : field_rows) data.*row.member = (this->*row.field).value();
  data.bed_compaction_option = dynamic_bed_volume;
  data.negative_solution = NegativeSolutionAllowedCheckBox;
  data.use_nps_file = UseNpsFileCheckBox;
  data.flow_option = flow_option;
  data.restart_option = restart_option;
  data.vesk_to_vesk_linkage_option = vesk_to_vesk_linkage ? 1 : 0;
  data.model_type = chosen_model_type(data);
  if (data.model_type != saved_model_type_)
    data.refresh_from_catalogue(false);
  else
    data.apply_seed();
  const auto technique = static_cast<std::size_t>(SolutionTypeComboBox); // -1 becomes a position beyond all items
  if (technique < data.solution_techniques.size())
    data.solution_type = static_cast<std::uint32_t>(data.solution_techniques[technique].id);
}

} // namespace vesk
