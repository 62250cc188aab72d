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

// Before a holder is copied, and before one goes away. `memory`: what is shared, with this many holders so far.
void check_copy(const void* memory, std::uint32_t holders, byte_span content);
void check_leave(const void* memory, std::uint32_t holders, byte_span content);

// The bytes of the value itself; of a vector those of its elements.
template <class T>
byte_span own_bytes(const T& value) {
  return std::as_bytes(std::span(&value, 1));
}
template <class T>
byte_span own_bytes(const std::vector<T>& values) {
  return std::as_bytes(std::span(values));
}

} // namespace vesk::detail
