// Formats numbers by the entry pictures of the grids.
//
// In a picture "#" is a position for a digit (or the sign) and "E" one in exponent style; a point separates the
// positions before and after it. "#######.###" shows three decimals and has room for seven characters before the point;
// "EEEEEEE.EEEEEEE" and a single "E" show the shortest plain or exponent form.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// The width of a field whose picture is a single character.
inline constexpr int simple_field_width = 14;

// The number in the picture. A number that would lose digits (too large, or shown as 0 without being 0) is shown in
// exponent form instead, so that the digits shown are never wrong.
std::string number_in_picture(double value, std::string_view picture);

} // namespace vesk
