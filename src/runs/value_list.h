// Lists the values that can be set in a data set, as a table of parameters for calibration and sampling.
#pragma once

#include "dataset/dataset.h"

#include <functional>
#include <string>
#include <string_view>

namespace vesk {

// Calls `line` with each line of a CSV table, including its line end. Columns: name, path, minimum, maximum, start,
// transform, step. Rows are the numbers and series that a run uses; dates are left out. A number starts at its current
// value, with the catalogue's range if it has one. A series has the path "PATH*=" and starts at 1. Step: relative to
// the value.
void list_parameters(const prevesk_dataset_data_type& data, const std::function<void(const std::string&)>& line);

// The same for people: path, current value and name; includes dates.
void list_values(const prevesk_dataset_data_type& data, const std::function<void(const std::string&)>& line);

} // namespace vesk
