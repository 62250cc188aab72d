// The deferred queries of a data set: series that are refreshed from their source when they are needed.
#pragma once

#include "dataset/dataset.h"
#include "dataset/series.h"
#include "query/import_query.h"
#include "query/query_exceptions.h"

#include <filesystem>
#include <functional>
#include <stdexcept>

namespace vesk {

// The failure of one deferred query, with the name of its series.
class live_query_exception : public query_exception {
  using query_exception::query_exception;
};

// Fills `points` from the query's source. Throws query_exception.
using query_executor =
    std::function<query_report(const import_query_descriptor&, const prevesk_dataset_data_type&, point_list&)>;

// For the queries of one pass over a data set whose file is in `folder`, in one thread. Consecutive queries of one file
// share what is known of it; between them it is closed if it holds several tables, and all is closed with the executor.
query_executor executor_of_a_pass(const std::filesystem::path& folder);

// Receives progress and reports while queries are executed.
class query_progress {
public:
  virtual ~query_progress() = default;
  virtual void percent_done(int percent) = 0; // of all series, whenever it changes
  virtual void executed(const std::string& series, const import_query_descriptor& query,
                        const query_report& report) = 0;
};

// Executes every deferred query of the data set, in the order print intervals, time steps, time functions, the loads
// and boundaries of each system, exchange functions, flow functions. With `clear_flags` each query that has run is no
// longer deferred. With `wanted` only the queries of the series for which it answers true. Stops at the first failure
// with live_query_exception; the data set then has what was done so far.
void execute_deferred_queries(prevesk_dataset_data_type& data_set, const query_executor& execute,
                              query_progress& progress, bool clear_flags,
                              const std::function<bool(const series_ref&)>& wanted = {});

} // namespace vesk
