// The rows of the keyword table, one source per subject.
#pragma once

#include "shell/keywords/function_description.h"

#include <algorithm>
#include <array>

namespace vesk {

template <std::size_t Count>
using keyword_rows = std::array<keyword_row, Count>;

extern const keyword_rows<24> rows_data_set;
extern const keyword_rows<17> rows_series;
extern const keyword_rows<15> rows_segments;
extern const keyword_rows<26> rows_systems;
extern const keyword_rows<22> rows_fields;
extern const keyword_rows<29> rows_job;
extern const keyword_rows<24> rows_outputs;

// For a static_assert after the rows: names of 1 to 16 capital letters, a handler that matches the arguments of the
// row, a warning for the mode that is not served (only IMPORT is silent), a PUT if series may change.
constexpr bool well_formed(const keyword_row& row) {
  const std::size_t size = row.keyword.size();
  if (size == 0 || size > padded_keyword::max_size) return false;
  if (row.keyword.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") != std::string_view::npos) return false;
  if (row.handler.count != row.variables.size()) return false;
  for (std::size_t i = 0; i < row.variables.size(); ++i)
    if (row.handler.types[i] != row.variables[i].type) return false;
  if (row.changes_series && !(row.modes & put)) return false;
  return (row.modes != get_put && row.keyword != "IMPORT") == row.refusal.starts_with("WARNING: ");
}

template <std::size_t Count>
constexpr bool well_formed(const keyword_rows<Count>& rows) {
  return std::all_of(rows.begin(), rows.end(), [](const keyword_row& row) { return well_formed(row); });
}

} // namespace vesk
