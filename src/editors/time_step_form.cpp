#include "editors/time_step_form.h"

namespace vesk {

void TTimeStepForm::FormShow() {
  was_empty_ = host().data_set() && host().data_set()->time_steps.points.empty();
  series_form::FormShow();
}

// The first time steps of a data set give its empty series their default points.
void TTimeStepForm::accepted() {
  prevesk_dataset_data_type* data = host().data_set();
  if (data && was_empty_ && data->time_steps.points.size() >= 2) data->give_default_points();
}

} // namespace vesk
