// Attributes of a NetCDF file, of variables and of itself.
#pragma once

#include <string>
#include <vector>

namespace vesk::nc {

// Empty where there is none or it is not a text.
std::string text_attribute(int file, int variable, const char* name);

// The first ones, at most 16. Empty where there is none or it is not of numbers.
std::vector<double> number_attribute(int file, int variable, const char* name);

} // namespace vesk::nc
