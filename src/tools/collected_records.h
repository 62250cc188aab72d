// The records of many runs as one table.
#pragma once

#include <string>
#include <vector>

namespace vesk {

struct collected_records {
  std::string table;               // comma-separated, a row for each record: by row of the table of runs, then by name
  std::vector<std::string> faults; // files that are not such records, a sentence each
};

// All NAME.run.json in the folders and below; a name of a file is such a record itself. After the columns that all
// records have comes one for each value that any of them has set. Throws value_error: there is no record, or no such
// folder.
collected_records collect_records(const std::vector<std::string>& folders);

} // namespace vesk
