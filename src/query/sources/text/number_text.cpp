#include "query/sources/text/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace vesk {

namespace {

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// "1,234,567", optionally with a sign and a fraction.
bool has_thousands(std::string_view text) {
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  text = text.substr(0, text.find('.'));
  const std::size_t first = text.find(',');
  if (text.starts_with("0,")) return false; // a fraction
  if (first == 0 || first > 3 || (text.size() - first) % 4 != 0) return false;
  for (std::size_t i = 0; i < text.size(); ++i)
    if ((i >= first && (i - first) % 4 == 0) ? text[i] != ',' : !is_digit(text[i])) return false;
  return true;
}

std::optional<double> without_commas(std::string_view text) {
  std::array<char, 64> plain;
  if (text.size() > plain.size()) return std::nullopt;
  const auto end = std::remove_copy(text.begin(), text.end(), plain.begin(), ',');
  return plain_number({plain.data(), static_cast<std::size_t>(end - plain.begin())});
}

// A number with a decimal point, and optionally with commas between thousands.
std::optional<double> number_with_point(std::string_view text) {
  if (text.find(',') == text.npos) return plain_number(text);
  return has_thousands(text) ? without_commas(text) : std::nullopt;
}

} // namespace

std::optional<double> plain_number(std::string_view text) {
  // Up to 15 digits are exact as a double, and so is a power of ten up to 22: one division rounds correctly.
  constexpr double powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  const std::size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+');
  if (text.size() > sign && text.size() - sign <= 15) {
    std::int64_t digits = 0;
    std::size_t point = text.size(), i = sign;
    for (; i < text.size(); ++i) {
      if (is_digit(text[i]))
        digits = digits * 10 + (text[i] - '0');
      else if (text[i] == '.' && point == text.size())
        point = i;
      else
        break;
    }
    if (i == text.size() && (point == i || i - sign > 1)) {
      const double number = static_cast<double>(digits) / powers[point == i ? 0 : i - point - 1];
      return text[0] == '-' ? -number : number;
    }
  }
  if (sign && text[0] == '+' && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
  return number;
}

std::optional<double> read_number(std::string_view text, bool decimal_comma) {
  if (!decimal_comma) return number_with_point(text);
  std::array<char, 64> turned; // with the two marks exchanged
  if (text.size() > turned.size()) return std::nullopt;
  std::transform(text.begin(), text.end(), turned.begin(), [](char c) { return c == ',' ? '.' : c == '.' ? ',' : c; });
  const auto number = number_with_point({turned.data(), text.size()});
  return number || text.find(',') != text.npos ? number : plain_number(text);
}

} // namespace vesk
