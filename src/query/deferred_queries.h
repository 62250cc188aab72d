// The deferred queries of a data set: series that are refreshed from their source when they are needed.
#pragma once

#include "dataset/dataset.h"
#include "query/query_exceptions.h"

#include <functional>
#include <stdexcept>

namespace vesk {

// The failure of one deferred query, with the name of its series.
class live_query_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Fills `points` from the query's source. Throws query_engine_exception.
using query_executor =
    std::function<void(const import_query_descriptor&, const prevesk_dataset_data_type&, point_list&)>;

// Executes every deferred query of the data set, in the order print intervals, time steps, time functions, the loads
// and boundaries of each system, exchange functions, flow functions. After each series, deferred or not, `progress` is
// told the percentage of series done. With `clear_flags` each query that has run is no longer deferred. Stops at the
// first failure with live_query_exception; the data set then has what was done so far.
void execute_deferred_queries(prevesk_dataset_data_type& data_set, const query_executor& execute,
                              const std::function<void(int percent)>& progress, bool clear_flags);

} // namespace vesk
