// What code an input reaches, and what values it is compared with: filled by calls that the compiler puts in.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vesk::fuzz {

inline constexpr std::size_t block_count = std::size_t{1} << 16;

// How often each basic block was entered since the last `start_coverage`; blocks share counters by chance.
extern std::array<std::uint8_t, block_count> block_visits;

// Two different numbers that were compared, each of `size` bytes.
struct comparison {
  std::uint64_t left = 0, right = 0;
  unsigned size = 0; // 0: nothing noted yet
};
inline constexpr std::size_t comparison_count = 256;
extern std::array<comparison, comparison_count> comparisons; // the last ones, in no order

void start_coverage();

// Whether the visits since then hold something that no input before has reached; it counts as reached from now on.
bool is_new_coverage();

// How many such things there were so far; 0 in a build without coverage.
std::size_t coverage_so_far();

} // namespace vesk::fuzz
