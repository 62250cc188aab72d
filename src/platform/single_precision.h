// Numbers that were stored in single precision and are held as doubles, as values of results are. Printed as doubles
// they would show digits that the file does not have: 0.04 as 0.03999999910593033.
#pragma once

#include <span>

namespace vesk {

// For a value that single precision holds exactly, the double that prints as it does there; any other value itself.
double as_printed_in_single(double value);

// Whether all values, not-a-number aside, are held exactly in single precision.
bool are_in_single_precision(std::span<const double> values);

} // namespace vesk
