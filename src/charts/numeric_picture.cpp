#include "charts/numeric_picture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace vesk {

namespace {

std::string formatted(double value, std::chars_format format, int precision) {
  std::array<char, 512> text; // the longest double in fixed form has 309 digits before the point
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, format, precision).ptr;
  return {text.data(), end};
}

// The plain or exponent form with as many digits as fit in `width` characters.
std::string in_width(double value, std::size_t width) {
  for (int precision = 15; precision > 1; --precision) {
    std::string text = formatted(value, std::chars_format::general, precision);
    if (text.size() <= width) return text;
  }
  return formatted(value, std::chars_format::general, 1);
}

} // namespace

std::string number_in_picture(double value, std::string_view picture) {
  if (!std::isfinite(value)) return std::isnan(value) ? "NaN" : value > 0 ? "Inf" : "-Inf";
  const std::size_t width = picture.size() > 1 ? picture.size() : simple_field_width;
  if (picture.empty() || picture.find_first_not_of("#.") != std::string_view::npos) return in_width(value, width);
  const std::size_t point = std::min(picture.find('.'), picture.size());
  const int decimals = point == picture.size() ? 0 : static_cast<int>(picture.size() - point - 1);
  std::string text = formatted(value, std::chars_format::fixed, std::min(decimals, 40));
  const bool seems_zero = text.find_first_of("123456789") == std::string::npos;
  if (text.size() > width || (seems_zero && value != 0)) return in_width(value, width);
  if (seems_zero && text.front() == '-') text.erase(0, 1);
  return text;
}

} // namespace vesk
