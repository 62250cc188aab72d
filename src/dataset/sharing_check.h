// The rule of shared content, checked in debug builds: memory with several holders is never changed.
//
// The bytes are summed when memory gets its second holder, and compared whenever a holder is copied or goes away. A
// difference ends the program: someone has kept a reference from `edit` longer than the next copy. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vesk::detail {

#ifdef VESK_CHECK_SHARING
inline constexpr bool checks_sharing = true;
#else
inline constexpr bool checks_sharing = false;
#endif

using byte_span = std::span<const std::byte>;
std::uint64_t sum_of_bytes(byte_span content, std::uint64_t before = 0);

// Of the value itself, or of a vector's elements; where those share their content, of what they share. Arrays within
// records are compared once they have several holders themselves.
template <class T>
std::uint64_t content_sum(const T& value) {
  return sum_of_bytes(std::as_bytes(std::span(&value, 1)));
}
template <class T>
std::uint64_t content_sum(std::span<const T> values) {
  return sum_of_bytes(std::as_bytes(values));
}
template <class T>
std::uint64_t content_sum(const std::vector<T>& values) {
  if constexpr (requires(const T& one) { one.shares_with(one), *one; }) {
    std::uint64_t sum = values.size();
    for (const T& one : values) {
      const std::uint64_t of_one = content_sum(*one);
      sum = sum_of_bytes(std::as_bytes(std::span(&of_one, 1)), sum);
    }
    return sum;
  } else {
    return content_sum(std::span<const T>(values));
  }
}

// Before a holder is copied, and before one goes away. `memory`: what is shared, with this many holders so far.
void note_sum(const void* memory, std::uint64_t sum);
void compare_sum(const void* memory, std::uint64_t sum);
template <class T>
void check_copy(const void* memory, std::uint32_t holders, const T& content) {
  (holders > 1 ? compare_sum : note_sum)(memory, content_sum(content));
}
template <class T>
void check_leave(const void* memory, std::uint32_t holders, const T& content) {
  if (holders > 1) compare_sum(memory, content_sum(content));
}

} // namespace vesk::detail
