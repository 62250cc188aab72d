// The list of what can be set in a data set: the table of parameters of calibrations and samples.
#pragma once

#include "dataset/dataset.h"

#include <functional>
#include <string>
#include <string_view>

namespace vesk {

// Hands over the lines of a CSV table, each with its line end. Columns: name, path, minimum, maximum, start, transform,
// step. Numbers and series that a run uses have a row, dates not. A number starts at its present value, with the
// catalogue's range where it has one. A series has the path "PATH*=" and starts at 1. Step: relative to the value.
void list_parameters(const prevesk_dataset_data_type& data, const std::function<void(const std::string&)>& line);

// The same for people: path, present value and name; dates as well.
void list_values(const prevesk_dataset_data_type& data, const std::function<void(const std::string&)>& line);

} // namespace vesk
