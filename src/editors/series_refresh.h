// Refills a series from the table of its stored query.
#pragma once

#include "query/import_query.h"

#include <filesystem>

namespace vesk {

// The points of a series after its query was executed, and what the query found.
struct filling {
  point_list points;
  query_report report;
};

// Executes the query of a series with these points, in order of time. A query that adds to its series has added points
// before: new points replace those at the same dates and times, and the others stay. `folder`: of the data file. Throws
// query_exception and query_cancelled.
filling refreshed(import_query_descriptor query, const std::filesystem::path& folder,
                  const prevesk_dataset_data_type& data, const point_list& present);

} // namespace vesk
