// Attributes of a NetCDF file and of its variables.
#pragma once

#include <string>
#include <vector>

namespace vesk::nc {

// Empty if it is missing or not a text.
std::string text_attribute(int file, int variable, const char* name);

// At most the first 16 numbers. Empty if it is missing or not numeric.
std::vector<double> number_attribute(int file, int variable, const char* name);

} // namespace vesk::nc
