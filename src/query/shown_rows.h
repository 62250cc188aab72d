// The first rows of a query's statement as texts, for a grid.
#pragma once

#include "query/import_query.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

struct shown_rows {
  std::vector<std::string> fields;
  std::vector<std::string> cells; // of the first rows, row by row; long texts are cut, with "…" at their end
  std::uint64_t total = 0;        // rows that the statement gives

  std::size_t row_count() const { return fields.empty() ? 0 : cells.size() / fields.size(); }
};

// Reads the rows that the text of `build_sql` describes: at most `most_listed`, in order of time, and fewer where they
// are very wide. The others are only counted. The query must have been validated, or its lists read. Throws
// query_exception and query_cancelled.
shown_rows read_shown_rows(import_query& query, const prevesk_dataset_data_type& data);

} // namespace vesk
