// Letter case of ASCII letters, independent of the locale.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace vesk {

inline char upper_case(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline std::string upper_case(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = upper_case(c);
  return result;
}

inline bool equal_in_any_case(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) { return upper_case(x) == upper_case(y); });
}

} // namespace vesk
