// Where the table begins in a sheet or a text file that has titles above it, and what its columns are called.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// One of the first rows of a sheet or text file.
struct sample_row {
  std::vector<std::string> texts; // its cells as text, an empty one for an empty cell
  std::size_t values = 0;         // how many of them are numbers, dates or times
};

struct header {
  std::size_t row = 0;            // of the sample: the one with the names, or the first of the values
  bool has_names = false;         // false: the table has no names, and `row` is its first row
  std::vector<std::string> names; // of all columns, distinct and not empty
};

// Looks for the header in the first rows of a table: the first row that fills more than half of the columns that rows
// of the table usually fill. A row of nothing but values is no header; the columns are F1, F2 and so on then.
header find_header(const std::vector<sample_row>& sample);

} // namespace vesk
