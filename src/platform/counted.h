// Numbers followed by the counted word, in the singular or plural.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vesk {

// "1 boundary", "2 boundaries".
inline std::string counted(std::uint64_t count, std::string_view singular, std::string_view plural) {
  return std::to_string(count).append(" ").append(count == 1 ? singular : plural);
}

// "1 row", "2 rows".
inline std::string counted(std::uint64_t count, std::string_view singular) {
  return counted(count, singular, std::string(singular) + 's');
}

} // namespace vesk
