#include "editors/parameters_form.h"

#include <algorithm>

namespace vesk {

namespace {

// The fields that hold a number, a date or a time, and the members behind them, in the order of writing back.
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
  reinitialize_from_hyd_file_ = reads_hydrodynamic_file_ = comments_edited_ = was_replaced_ = false;
  show_texts();
  show_numbers(true);
  show_options();
  show_lists();
}

void TParametersForm::show_texts() {
  const data_type& data = *host_.data_set();
  DatasetNameEdit = data.description;
  CommentsMemo = with_plain_line_ends(data.comments);
  HydrodynamicLinkageFileEdit = data.hydrodynamic_file;
  NpsFileNameEdit = data.nps_file;
}

void TParametersForm::show_numbers(bool touched_too) {
  for (const field_row& row : field_rows)
    if (touched_too || !(this->*row.field).touched()) (this->*row.field).load(host_.data_set()->*row.member);
}

void TParametersForm::show_options() {
  const data_type& data = *host_.data_set();
  dynamic_bed_volume = data.bed_compaction_option;
  NegativeSolutionAllowedCheckBox = data.negative_solution;
  UseNpsFileCheckBox = data.use_nps_file;
  const bool known =
      data.flow_option == net_flows || data.flow_option == gross_flows || data.flow_option == kinematic_wave;
  flow_option = known ? data.flow_option : hydrodynamic_linkage;
  restart_option = std::min<std::uint32_t>(data.restart_option, neither_restart_button);
  vesk_to_vesk_linkage = data.vesk_to_vesk_linkage_option == 1;
}

void TParametersForm::show_lists() {
  const data_type& data = *host_.data_set();
  model_names.clear();
  solution_names.clear();
  ModelTypeComboBox = -1;
  if (data.catalogue())
    for (const catalogue_model& model : data.catalogue()->models) {
      if (model.model_id == data.model_type && ModelTypeComboBox < 0)
        ModelTypeComboBox = static_cast<int>(model_names.size());
      model_names.push_back(model.model_name);
    }
  SolutionTypeComboBox = data.solution_techniques.empty() ? -1 : 0;
  for (const solution_technique_type& technique : data.solution_techniques) {
    if (static_cast<std::uint32_t>(technique.id) == data.solution_type)
      SolutionTypeComboBox = static_cast<int>(solution_names.size());
    solution_names.push_back(technique.name);
  }
}

TParametersForm::enabled_controls TParametersForm::enabled() const {
  return {.nps_file = UseNpsFileCheckBox,
          .bed_compaction_time_step = dynamic_bed_volume,
          .hydrodynamic_file = flow_option == hydrodynamic_linkage,
          .ok = !host_.job_is_running()};
}

// The value, not what its field shows of it.
void TParametersForm::StartDateFieldChange() {
  if (StartDateField.refusal().empty()) HydroSkipDateField.load(StartDateField.value());
}

void TParametersForm::StartTimeFieldChange() {
  if (StartTimeField.refusal().empty()) HydroSkipTimeField.load(StartTimeField.value());
}

void TParametersForm::BrowseHydButtonClick() {
  const std::uint64_t generation = host_.generation();
  const auto name =
      host_.questions().ask_file({file_dialog::kind::open, {}, "Hydrodynamic Linkage Files|*.hyd", "hyd"});
  if (!name) return;
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
  host_.start_load_restart_file();
}

void TParametersForm::data_set_replaced() {
  if (!host_.data_set()) return;
  saved_model_type_ = host_.data_set()->model_type;
  was_replaced_ = true;
  show_numbers(false);
}

bool TParametersForm::another_model_is_chosen() const {
  const data_type* data = host_.data_set();
  if (!data || !data->catalogue() || ModelTypeComboBox < 0) return false;
  const auto& models = data->catalogue()->models;
  const auto chosen = static_cast<std::size_t>(ModelTypeComboBox);
  return chosen < models.size() && models[chosen].model_id != saved_model_type_;
}

std::string TParametersForm::message() const {
  if (host_.job_is_running()) return "The restart file is being loaded.";
  const data_type* data = host_.data_set();
  if (data && another_model_is_chosen()) {
    std::size_t loads = 0, boundaries = 0, constants = 0;
    for (const system_data_type& system : data->systems) {
      loads += system.loads.size();
      boundaries += system.boundaries.size();
    }
    for (const constant_group_data_type& group : data->constant_groups) constants += group.constants.size();
    return "OK drops what belongs to the present model: " + plural(data->systems.size(), "system", "systems") + ", " +
           plural(loads, "load", "loads") + ", " + plural(boundaries, "boundary", "boundaries") + ", " +
           plural(constants, "constant", "constants") + ".";
  }
  for (const field_row& row : field_rows)
    if (const entry_field& field = this->*row.field; !field.refusal().empty())
      return field.label + ": " + field.refusal() + ".";
  return was_replaced_ ? "A job has replaced the data set; entries that you made are kept." : "";
}

bool TParametersForm::FormCloseQuery(bool by_ok) {
  return !by_ok || OkButtonClick();
}

// Unchanged text is not written, since an edit box loses carriage returns; changed text keeps the line ends it had.
std::string TParametersForm::stored_comments(const data_type& data) const {
  if (!comments_edited_ || CommentsMemo == with_plain_line_ends(data.comments)) return data.comments;
  if (data.comments.find("\r\n") == std::string::npos) return CommentsMemo;
  std::string text;
  for (const char c : CommentsMemo) text += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return text;
}

bool TParametersForm::OkButtonClick() {
  data_type* data = host_.data_set();
  if (!data || !enabled().ok) return false;
  for (const field_row& row : field_rows)
    if (!(this->*row.field).refusal().empty()) return false;

  data->comments = stored_comments(*data);
  data->description = DatasetNameEdit;
  data->hydrodynamic_file = HydrodynamicLinkageFileEdit;
  data->nps_file = NpsFileNameEdit;
  for (const field_row& row : field_rows) data->*row.member = (this->*row.field).value();
  data->bed_compaction_option = dynamic_bed_volume;
  data->negative_solution = NegativeSolutionAllowedCheckBox;
  data->use_nps_file = UseNpsFileCheckBox;
  data->flow_option = flow_option;
  data->restart_option = restart_option;
  data->vesk_to_vesk_linkage_option = vesk_to_vesk_linkage ? 1 : 0;
  // By name: of two models with one name the first is taken.
  if (data->catalogue() && ModelTypeComboBox >= 0) {
    const auto& models = data->catalogue()->models;
    const std::string& name = model_names[static_cast<std::size_t>(ModelTypeComboBox)];
    const auto model = std::ranges::find(models, name, &catalogue_model::model_name);
    if (model != models.end()) data->model_type = model->model_id;
  }
  if (data->model_type != saved_model_type_)
    data->refresh_from_catalogue(false);
  else
    data->apply_seed();
  if (SolutionTypeComboBox >= 0 && static_cast<std::size_t>(SolutionTypeComboBox) < data->solution_techniques.size())
    data->solution_type =
        static_cast<std::uint32_t>(data->solution_techniques[static_cast<std::size_t>(SolutionTypeComboBox)].id);
  reads_hydrodynamic_file_ =
      data->flow_option == hydrodynamic_linkage && !data->hydrodynamic_file.empty() && reinitialize_from_hyd_file_;
  return true;
}

} // namespace vesk
