#include "shell/handlers/format_values.h"

#include <array>
#include <cstdio>

namespace vesk {

namespace {

constexpr std::size_t largest_field = 255;
constexpr std::string_view digits = "0123456789";

// Removes the longest prefix of `text` that consists of `characters`, and returns it.
std::string_view take(std::string_view& text, std::string_view characters) {
  const std::size_t end = std::min(text.find_first_not_of(characters), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end);
  return taken;
}

bool fits(std::string_view field) {
  return field.size() <= 3 && (field.empty() || std::stoul(std::string(field)) <= largest_field);
}

// The conversion at the start of `rest`, after its percent sign, without length modifier; empty if it is not a
// conversion.
std::string take_specification(std::string_view& rest) {
  std::string result = "%";
  result += take(rest, "-+ #0").substr(0, 5);
  const std::string_view width = take(rest, digits);
  result += width;
  std::string_view precision;
  if (rest.starts_with('.')) {
    rest.remove_prefix(1);
    precision = take(rest, digits);
    result.append(".").append(precision);
  }
  take(rest, "l");
  if (rest.empty() || !fits(width) || !fits(precision)) return {};
  result += rest.front();
  rest.remove_prefix(1);
  return result;
}

// Appends `value` formatted by `specification`, which ends in its conversion; false if they do not match.
bool append(std::string& text, const std::string& specification, const format_value& value) {
  const bool integer = std::holds_alternative<std::int32_t>(value);
  if (std::string_view(integer ? "diuxXoc" : "eEfFgGaA").find(specification.back()) == std::string_view::npos)
    return false;
  std::array<char, 1024> buffer; // the longest: a width of 255, or 309 digits, a point and a precision of 255
  const char* format = specification.c_str();
  const int size = integer ? std::snprintf(buffer.data(), buffer.size(), format, std::get<std::int32_t>(value))
                           : std::snprintf(buffer.data(), buffer.size(), format, std::get<double>(value));
  if (size < 0) return false;
  text.append(buffer.data(), std::min(static_cast<std::size_t>(size), buffer.size() - 1));
  return true;
}

} // namespace

std::optional<std::string> format_values(std::string_view format, std::span<const format_value> values) {
  std::string result;
  while (!format.empty()) {
    const std::size_t percent = std::min(format.find('%'), format.size());
    result += format.substr(0, percent);
    format.remove_prefix(percent);
    if (format.empty()) break;
    format.remove_prefix(1);
    if (format.starts_with('%')) {
      result += '%';
      format.remove_prefix(1);
      continue;
    }
    const std::string specification = take_specification(format);
    if (specification.empty() || values.empty() || !append(result, specification, values.front())) return {};
    values = values.subspan(1);
  }
  return result;
}

} // namespace vesk
