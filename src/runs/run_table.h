// A table of runs: one row per run, one column per value it sets.
//
// The header contains paths, followed by an operator unless it is "=", or names from a table of parameters. A column
// "row" or "id" names the run's folder; otherwise the row's number does. Rows count from 0.
#pragma once

#include "runs/csv_table.h"
#include "runs/set_values.h"

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class run_table {
public:
  // `parameters`: name and path of each; null: none. Throws value_error: an unknown column, a repeated path, or two
  // rows with the same folder.
  run_table(csv_table table, const csv_table* parameters, const prevesk_dataset_data_type& data);

  // For reading the size and folders only.
  explicit run_table(csv_table table);

  std::size_t size() const { return table_.rows.size(); }

  // The name of the row's folder: letters, digits, points, hyphens and underscores. For a missing row, its number.
  // Throws value_error.
  std::string folder(std::size_t row) const;

  // The values that the row sets in `data`. Throws value_error, which names row and column.
  std::vector<value_assignment> assignments(const prevesk_dataset_data_type& data, std::size_t row) const;

  // The series that columns set from files.
  std::vector<series_ref> series_from_files(const prevesk_dataset_data_type& data) const;

  // Throws value_error if the row does not exist. `wanted`: the end of its sentence, such as "--row asks for 7".
  void require(std::size_t row, std::string_view wanted) const;

private:
  std::string cause_in_column(std::size_t column, std::string_view cause) const;

  csv_table table_;
  std::size_t folder_column_;      // table_.header.size(): none
  std::vector<std::string> paths_; // of the columns, with their operators; empty for the folder column
};

// Row numbers: "3", "5-9", "0,4,7-9". Throws value_error.
std::vector<std::size_t> parse_row_numbers(const std::string& text);

// The next number of a white-space separated stream; nothing at its end. Throws value_error.
std::optional<std::size_t> read_row_number(std::istream& numbers);

} // namespace vesk
