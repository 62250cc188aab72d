// Numbers as the entry pictures of the grids show them.
//
// In a picture "#" is a position for a digit (or the sign) and "E" one in exponent style; a point parts the positions
// before and after it. "#######.###" shows three decimals and has room for seven characters before the point;
// "EEEEEEE.EEEEEEE" and a lone "E" show the shortest plain or exponent form.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// The width of a field whose picture is a single character.
inline constexpr int simple_field_width = 14;

// The number in the picture. A number that its positions would cut (too large, or other than 0 but shown as 0) is
// shown in exponent form instead, so that no digit that is shown is wrong.
std::string number_in_picture(double value, std::string_view picture);

} // namespace vesk
