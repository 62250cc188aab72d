// The initial data set of the tools: a new one, but without the clock's dates and times, so that the same input gives
// the same output on any day.
#pragma once

#include "dataset/dataset.h"

namespace vesk {

inline prevesk_dataset_data_type clockless_data_set() {
  prevesk_dataset_data_type data;
  data.seed_date = data.end_date = data.skip_date = 0;
  data.seed_time = data.end_time = data.skip_time = 0;
  return data;
}

} // namespace vesk
