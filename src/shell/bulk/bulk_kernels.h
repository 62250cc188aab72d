// The arithmetic of a step over many rows at once, in the widest form that the processor has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vesk {

inline constexpr std::size_t bulk_block_rows = 8;

// What a step needs of eight series. Between `previous` and `next`, both date-time numbers, a series has the value
//   delta * ((t - previous) / (next - previous)) + value
// A series that holds a value, because it goes in steps or `t` lies beyond its ends, has delta -0.0: then the sum is
// `value` in every bit, whether it is -0.0 or not. `next` is infinite where nothing comes any more.
struct alignas(64) bulk_block {
  double next[bulk_block_rows];
  double previous[bulk_block_rows];
  double value[bulk_block_rows];
  double delta[bulk_block_rows];
};

// Writes the value at `t` of each row of `blocks`, rounded to single precision, to `values`, and the positions of the
// rows whose `next` has been reached, in ascending order, to `reached`. Returns their number. Their values are not
// valid. `reached` has room for bulk_block_rows entries more than there are rows.
using bulk_kernel = std::size_t (*)(const bulk_block* blocks, std::size_t block_count, double t, float* values,
                                    std::uint32_t* reached);

struct bulk_kernel_choice {
  const char* name;
  bulk_kernel run; // null where the processor, or the build, has it not
};

// All forms, the plainest first. They give the same bits.
inline constexpr std::size_t bulk_kernel_count = 3;
const bulk_kernel_choice (&bulk_kernels())[bulk_kernel_count];

// The last that is there.
bulk_kernel best_bulk_kernel();

} // namespace vesk
