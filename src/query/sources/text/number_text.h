// Reads numbers from texts.
#pragma once

#include <optional>
#include <string_view>

namespace vesk {

// The whole text as a number with a decimal point, correctly rounded; an exponent may follow. Nothing if it is not a
// finite number.
std::optional<double> plain_number(std::string_view text);

// A number written with a decimal point or comma. The other one of the two may separate thousands.
std::optional<double> read_number(std::string_view text, bool decimal_comma);

} // namespace vesk
