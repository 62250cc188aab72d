// The interpolation algorithm in its plain form, on the records and their cursors.
//
// It serves a job once its series have been changed on the way, and series that the fast table refuses; and it is what
// the fast table is held against.
#pragma once

#include "dataset/series.h"
#include "shell/bulk/bulk_service.h"

#include <functional>

namespace vesk {

// The value of `points` at the date-time number `t`; beyond its ends a series keeps its first and last value, and one
// without points is 0. `cursors` are the series' own and are moved. Points need not be in order: the first two points
// that have `t` between them count.
double evaluate_series(const point_list& points, bool step, series_cursors& cursors, double t);

// Evaluates all series of one stage at `t` into the engine's `array`. Moves the cursors in `data`. `left_out`
// is called for each series or field that has no element in the array, as by visit_series.
void update_stage(prevesk_dataset_data_type& data, bulk_stage stage, double t, float* array,
                  const std::function<void(const series_ref&)>& left_out);

} // namespace vesk
