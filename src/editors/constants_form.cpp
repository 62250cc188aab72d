#include "editors/constants_form.h"

#include "charts/numeric_picture.h"
#include "dataset/findings.h"
#include "editors/catalogue_tip.h"

#include <algorithm>

namespace vesk {

namespace {

enum : std::size_t { used_column = 1, value_column = 2 };

std::vector<record_column<constant_data_type>> columns() {
  using constant = constant_data_type;
  return {
      {.header = "Constant", .type = text_cell(), .field = &constant::description, .tool_tip = description_tip},
      {.header = "Used", .type = check_cell(), .field = &constant::used},
      {.header = "Value", .type = number_cell({}), .field = &constant::value, .format = "ConstantsBasicSimpleField"},
      {.header = "Minimum",
       .type = number_cell({}),
       .field = &constant::minimum,
       .format = "ConstantsBasicNumericField",
       .editable = false},
      {.header = "Maximum",
       .type = number_cell({}),
       .field = &constant::maximum,
       .format = "ConstantsBasicNumericField",
       .editable = false},
  };
}

} // namespace

TConstantsForm::TConstantsForm(editor_host& host)
    : list_form(host, "TConstantsForm", "Constants Data",
                {columns(), [this] { return constants(); },
                 [this]() -> shared_list<constant_data_type>* {
                   if (!constants()) return nullptr;
                   return &this->host().data_set()->constant_groups.edit(ConstantGroupComboBox.position).constants;
                 }}) {
  panel().label = "Constants";
  records().mark_of = [](const constant_data_type& constant, std::size_t column) {
    return cell_mark{column == value_column && constant.used
                         ? range_finding(constant.value, constant.minimum, constant.maximum)
                         : std::string()};
  };
  panel().table.OnDoneEdit = [this](std::size_t column) {
    if (column == used_column) note_value_in_use((*constants())[panel().table.active_row()]);
  };
  records().tip_of = [](const constant_data_type& constant, std::size_t column) -> std::string {
    if (column != value_column) return {};
    return catalogue_tip(constant.default_value, constant.minimum, constant.maximum);
  };
  records().default_of = [](const constant_data_type& constant, std::size_t column) {
    return column == value_column ? std::optional<cell_value>(constant.default_value) : std::nullopt;
  };
}

// A new model shows 0 for each constant, which is not what a run has had for it until now.
void TConstantsForm::note_value_in_use(const constant_data_type& constant) {
  if (!constant.used || constant.value != 0 || constant.default_value == 0) return set_message({});
  set_message("\"" + shown_text(constant.description) + "\" is now used with the value 0. The catalogue's default is " +
              entry_text(number_cell({}), constant.default_value) +
              ": \"Back to the default\" in the menu of the value sets it.");
}

const shared_list<constant_data_type>* TConstantsForm::constants() const {
  const prevesk_dataset_data_type* data = host().data_set();
  const std::size_t group = ConstantGroupComboBox.position;
  return data && group < data->constant_groups.size() ? &data->constant_groups[group].constants : nullptr;
}

void TConstantsForm::FormShow() {
  ConstantGroupComboBox.position = 0;
  panel().table.set_active(0, panel().table.active_column());
  list_form::FormShow();
}

void TConstantsForm::take_content() {
  ConstantGroupComboBox.items.clear();
  if (const prevesk_dataset_data_type* data = host().data_set())
    for (const constant_group_data_type& group : data->constant_groups)
      ConstantGroupComboBox.items.push_back(shown_text(group.description));
  const std::size_t groups = std::max<std::size_t>(ConstantGroupComboBox.items.size(), 1);
  ConstantGroupComboBox.position = std::min(ConstantGroupComboBox.position, groups - 1);
  list_form::take_content();
}

void TConstantsForm::ChoiceChange(std::size_t position) {
  if (!may_go_on()) return;
  ConstantGroupComboBox.position = position;
  panel().table.set_active(0, panel().table.active_column());
  panel().table.set_selection(std::nullopt);
  list_form::take_content();
  refresh_texts();
}

} // namespace vesk
