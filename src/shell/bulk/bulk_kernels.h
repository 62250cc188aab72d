// The arithmetic of a step, on many rows at once, in the widest form that the processor supports.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vesk {

inline constexpr std::size_t bulk_block_rows = 8;

// The data of eight series for a step. Between `previous` and `next`, both date-time numbers, the value of a series is
//   delta * ((t - previous) / (next - previous)) + value
// A series with a constant value, because it is a step series or `t` is beyond its ends, has delta -0.0: then the sum
// is `value` in every bit, even if that is -0.0. `next` is infinite after the last point.
struct alignas(64) bulk_block {
  double next[bulk_block_rows];
  double previous[bulk_block_rows];
  double value[bulk_block_rows];
  double delta[bulk_block_rows];
};

// Writes the value at `t` of each row of `blocks`, rounded to single precision, to `values`, and the positions of the
// rows whose `next` has been reached, in ascending order, to `reached`. Returns the number of those rows, whose values
// are not valid. `reached` must have bulk_block_rows more entries than there are rows.
using bulk_kernel = std::size_t (*)(const bulk_block* blocks, std::size_t block_count, double t, float* values,
                                    std::uint32_t* reached);

struct bulk_kernel_choice {
  const char* name;
  bulk_kernel run; // null if the processor, or the build, does not support it
};

// All forms, the simplest first. They give identical bits.
inline constexpr std::size_t bulk_kernel_count = 3;
const bulk_kernel_choice (&bulk_kernels())[bulk_kernel_count];

// The last one available.
bulk_kernel best_bulk_kernel();

} // namespace vesk
