// What one input may take.
#pragma once

#include <cstddef>

namespace vesk::fuzz {

inline constexpr std::size_t most_memory = std::size_t{1} << 30; // bytes; what goes beyond gets std::bad_alloc

// Memory that C libraries take is bounded, too, where no sanitizer needs the address space for itself.
void limit_memory();

} // namespace vesk::fuzz
