#include "editors/regular_times_form.h"

#include <cmath>

namespace vesk {

void TRegularTimesForm::begin(const prevesk_dataset_data_type& data) {
  StartDateField.load(data.seed_date);
  StartTimeField.load(data.seed_time);
  EndDateField.load(data.end_date);
  EndTimeField.load(data.end_time);
  StepField.load(1);
}

regular_times TRegularTimesForm::times() const {
  return {.start = moment_type::from_date_time(StartDateField.value() + StartTimeField.value()),
          .end = moment_type::from_date_time(EndDateField.value() + EndTimeField.value()),
          .step = std::llround(StepField.value() * seconds_per_day)};
}

std::string TRegularTimesForm::message() const {
  for (const entry_field* field : entry_fields())
    if (!field->refusal().empty()) return field->label + ": " + field->refusal() + ".";
  return refusal_of(times());
}

bool TRegularTimesForm::FormCloseQuery(bool by_ok) {
  return !by_ok || message().empty();
}

} // namespace vesk
