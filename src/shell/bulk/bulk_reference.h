// The interpolation algorithm in its plain form, on the records and their cursors.
//
// It serves a job once its series have been changed during the run, and series that the fast table does not accept.
// Tests compare the fast table with it.
#pragma once

#include "dataset/series.h"
#include "shell/bulk/bulk_service.h"

#include <functional>

namespace vesk {

// The value of `points` at the date-time number `t`. Before and after its points a series has its first and last value;
// without points it is 0. `cursors` belong to the series and are moved. Points need not be in order: the first two
// adjacent points with `t` between them are used.
double evaluate_series(const point_list& points, bool step, series_cursors& cursors, double t);

// Evaluates all series of one stage at `t` into the engine's `array`. Moves the cursors in `data`. `left_out` is called
// for each series or field without an element in the array, as by visit_series.
void update_stage(prevesk_dataset_data_type& data, bulk_stage stage, double t, float* array,
                  const std::function<void(const series_ref&)>& left_out);

} // namespace vesk
