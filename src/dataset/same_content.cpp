#include "dataset/same_content.h"

#include <cmath>
#include <utility>

namespace vesk {

bool same_content(prevesk_dataset_data_type a, prevesk_dataset_data_type b) {
  using data_set = prevesk_dataset_data_type;
  for (double data_set::*const member :
       {&data_set::seed_date, &data_set::end_date, &data_set::seed_time, &data_set::end_time, &data_set::skip_date,
        &data_set::skip_time, &data_set::volume_scale_factor, &data_set::volume_conversion_factor,
        &data_set::bed_compaction_time_step, &data_set::fraction_of_max_time_step, &data_set::max_dt,
        &data_set::min_dt})
    if (std::isnan(a.*member) && std::isnan(b.*member)) a.*member = b.*member = 0;
  return a == b;
}

bool same_input(prevesk_dataset_data_type a, const prevesk_dataset_data_type& b) {
  a.max_num_segments = b.max_num_segments;
  a.max_num_ef_functions = b.max_num_ef_functions;
  a.max_num_time_breaks = b.max_num_time_breaks;
  a.max_num_boundaries = b.max_num_boundaries;
  a.max_num_loads = b.max_num_loads;
  a.validation_results = b.validation_results;
  return same_content(std::move(a), b);
}

} // namespace vesk
