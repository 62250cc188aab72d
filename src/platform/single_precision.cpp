#include "platform/single_precision.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace vesk {

namespace {

bool is_in_single_precision(double value) {
  constexpr double nearly_greatest = 3e38; // a greater one may not be converted
  return std::abs(value) <= nearly_greatest && double{static_cast<float>(value)} == value;
}

} // namespace

double as_printed_in_single(double value) {
  if (!is_in_single_precision(value)) return value;
  std::array<char, 64> text{};
  std::to_chars(text.data(), text.data() + text.size() - 1, static_cast<float>(value));
  return std::strtod(text.data(), nullptr);
}

bool are_in_single_precision(std::span<const double> values) {
  return std::ranges::all_of(values, [](double it) { return std::isnan(it) || is_in_single_precision(it); });
}

} // namespace vesk
