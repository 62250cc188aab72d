#include "editors/set_seed_date_form.h"

namespace vesk {

void TSetSeedDateForm::FormShow() {
  const prevesk_dataset_data_type* data = host_.data_set();
  if (!data) return;
  StartDateField.load(data->seed_date);
  StartTimeField.load(data->seed_time);
}

std::string TSetSeedDateForm::message() const {
  for (const entry_field* field : {&StartDateField, &StartTimeField})
    if (!field->refusal().empty()) return field->label + ": " + field->refusal() + ".";
  return {};
}

bool TSetSeedDateForm::FormCloseQuery(bool by_ok) {
  prevesk_dataset_data_type* data = host_.data_set();
  if (!by_ok || !data) return true;
  if (!message().empty()) return false;
  data->seed_date = StartDateField.value();
  data->seed_time = StartTimeField.value();
  return true;
}

} // namespace vesk
