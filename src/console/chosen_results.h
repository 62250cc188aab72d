// The series that --results asks for, as in "DO@24,{Dissolved oxygen}@{km 60 Oak City}".
#pragma once

#include "dataset/dataset.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

struct chosen_series {
  std::string variable;    // of the results file, a name without braces
  bool is_named = false;   // whether it was in braces
  std::size_t segment = 0; // position, from 0
};

// Throws value_error: not such a text, or no segment of the data set.
std::vector<chosen_series> read_chosen_series(std::string_view text, const prevesk_dataset_data_type& data);

// The same for the bundled engine's VESK_RESULTS: segments by number.
std::string text_of(const std::vector<chosen_series>& series);

// The table that the bundled engine would write, cut out of a results file. Throws results_exception, value_error and
// file_exception.
std::string table_of_series(const std::filesystem::path& results, const std::vector<chosen_series>& series);

} // namespace vesk
