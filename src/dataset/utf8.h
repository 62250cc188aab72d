// Writing UTF-8.
#pragma once

#include <string>

namespace vesk {

// `character`: a code point, no surrogate.
inline void append_utf8(std::string& text, char32_t character) {
  const auto add = [&text](char32_t byte) { text += static_cast<char>(byte); };
  const auto add_rest = [&](int shift) { add(0x80 | (character >> shift & 0x3f)); };
  if (character < 0x80) return add(character);
  if (character < 0x800) {
    add(0xc0 | character >> 6);
  } else if (character < 0x10000) {
    add(0xe0 | character >> 12);
    add_rest(6);
  } else {
    add(0xf0 | character >> 18);
    add_rest(12);
    add_rest(6);
  }
  add_rest(0);
}

} // namespace vesk
