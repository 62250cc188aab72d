// Fills a series anew from the table that its stored query reads.
#pragma once

#include "query/import_query.h"

#include <filesystem>

namespace vesk {

// The points of a series after its query was executed, and what the query found.
struct filling {
  point_list points;
  query_report report;
};

// Executes the query of a series that has these points, in order of time. A query that adds to its series has done so
// before: the points that it finds take the places of those at the same dates and times, and the others stay.
// `folder`: of the data file. Throws query_exception and query_cancelled.
filling refreshed(import_query_descriptor query, const std::filesystem::path& folder,
                  const prevesk_dataset_data_type& data, const point_list& present);

} // namespace vesk
