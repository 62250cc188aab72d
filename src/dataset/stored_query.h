// A stored query describes the source of a series' points. Plain data; `import_query` executes it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vesk {

// A row of a query's filter.
struct query_condition {
  std::string field_name;
  std::uint32_t conjunction = 0; // 0 AND, 1 OR; connects this row to the one before
  std::uint32_t comparison = 0;  // 0 =, 1 <, 2 <=, 3 >, 4 >=
  std::string value_text;

  friend bool operator==(const query_condition&, const query_condition&) = default;
};

struct import_query_descriptor {
  std::string name = "New Query";
  std::string file_name;
  std::string table_name;
  bool restrict_to_run_period = true;
  bool average_duplicates = true; // one point for all rows with the same date and time
  std::string date_time_field;
  std::string value_field;
  bool replace_existing = true; // erase the series before it is filled
  std::vector<query_condition> conditions;
  bool deferred = false; // run at each run of the model instead of once

  friend bool operator==(const import_query_descriptor&, const import_query_descriptor&) = default;
};

} // namespace vesk
