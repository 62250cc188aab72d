#include "editors/time_step_form.h"

namespace vesk {

void TTimeStepForm::FormShow() {
  was_empty_ = host().data_set() && host().data_set()->time_steps.points.empty();
  series_form::FormShow();
}

// The first time steps of a data set give it its first series: two points of 0 for each empty one that a run needs.
// Boundaries, exchange and flow functions get theirs where they are made.
void TTimeStepForm::accepted() {
  prevesk_dataset_data_type* data = host().data_set();
  if (!data || !was_empty_ || data->time_steps.points.size() < 2) return;
  data->ensure_default_points(data->print_intervals.points);
  for (std::size_t i = 0; i < data->time_functions.size(); ++i)
    if (data->time_functions[i].points.empty()) data->ensure_default_points(data->time_functions.edit(i).points);
  for (std::size_t s = 0; s < data->systems.size(); ++s)
    for (std::size_t i = 0; i < data->systems[s].loads.size(); ++i)
      if (data->systems[s].loads[i].points.empty())
        data->ensure_default_points(data->systems.edit(s).loads.edit(i).points);
}

} // namespace vesk
