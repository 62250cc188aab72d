// Reads little-endian numbers from the bytes of a file.
#pragma once

#include <bit>
#include <cstring>
#include <type_traits>

namespace vesk {

static_assert(std::endian::native == std::endian::little, "numbers are copied as they are in the file");

// The number in the `sizeof(T)` bytes at `bytes`, which need not be aligned.
template <class T>
T little_endian(const char* bytes) {
  static_assert(std::is_arithmetic_v<T>);
  T number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

} // namespace vesk
