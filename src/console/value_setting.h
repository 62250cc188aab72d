// Setting values in the open data set before a run.
#pragma once

#include "app/main_form.h"
#include "runs/set_values.h"

#include <vector>

namespace vesk {

// Sets values in the data set of `form`, of which there must be one. A series that is scaled or moved is filled by its
// query first, unless the form skips queries; a series that is set has no need of its query. All of them are plain
// series afterwards. The record of the next run names the values. False: a query failed, reported by the form. Throws
// value_error and query_exception. In both cases the data set is as it was.
//
// `before_queries`: the data set before its queries were executed, for the record; null: the open one.
bool set_values(TPreveskMainForm& form, const std::vector<value_assignment>& assignments, bool beyond_limits,
                const prevesk_dataset_data_type* before_queries = nullptr);

// Executes the deferred queries of the open data set, but for the series that are set from files. True: they are plain
// series now. False: a query failed, reported by the form.
bool fill_other_series(TPreveskMainForm& form, const std::vector<series_ref>& set_from_files);

} // namespace vesk
