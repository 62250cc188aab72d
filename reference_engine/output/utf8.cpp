#include "output/utf8.h"

#include <cstdint>

namespace reference_engine {

bool is_utf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto first = static_cast<unsigned char>(bytes.front());
    const std::size_t length = first < 0x80 ? 1 : first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    if (length == 0 || first > 0xf4 || bytes.size() < length) return false;
    std::uint32_t character = length == 1 ? first : first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
      const auto next = static_cast<unsigned char>(bytes[i]);
      if ((next & 0xc0) != 0x80) return false;
      character = character << 6 | (next & 0x3fU);
    }
    constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000}; // by length
    const bool is_surrogate = character >= 0xd800 && character < 0xe000;
    if (character < least[length] || is_surrogate || character > 0x10ffff) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

} // namespace reference_engine
