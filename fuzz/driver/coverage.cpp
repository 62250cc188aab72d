// Built without the instrumentation that it serves.
#include "coverage.h"

#include <bit>

extern "C" const char __executable_start; // of the linker: addresses count from here, so that runs are alike

namespace vesk::fuzz {

std::array<std::uint8_t, block_count> block_visits;
std::array<comparison, comparison_count> comparisons;

namespace {

std::array<std::uint8_t, block_count> reached; // a bit for each number of visits of a block
std::size_t reached_count = 0;
std::size_t next_comparison = 0;

std::size_t block_of(const void* address) {
  const auto distance =
      reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(&__executable_start);
  return (distance * 0x9e3779b97f4a7c15U) >> (64 - std::bit_width(block_count - 1));
}

// 1, 2, 3, 4 to 7, 8 to 15 and so on: the number of visits as one of eight bits.
std::uint8_t visits_bit(std::uint8_t visits) {
  const int step = visits < 4 ? visits - 1 : visits < 128 ? std::bit_width(visits) : 7;
  return static_cast<std::uint8_t>(1U << step);
}

void note(std::uint64_t left, std::uint64_t right, unsigned size) {
  if (left != right) comparisons[next_comparison++ % comparison_count] = {left, right, size};
}

} // namespace

void start_coverage() {
  block_visits.fill(0);
}

bool is_new_coverage() {
  const std::size_t before = reached_count;
  for (std::size_t i = 0; i < block_count; ++i) {
    if (block_visits[i] == 0) continue;
    const std::uint8_t bit = visits_bit(block_visits[i]);
    if (reached[i] & bit) continue;
    reached[i] |= bit;
    ++reached_count;
  }
  return reached_count > before;
}

std::size_t coverage_so_far() {
  return reached_count;
}

} // namespace vesk::fuzz

using vesk::fuzz::block_visits;
using vesk::fuzz::note;

// The names are the compiler's.
extern "C" {
void __sanitizer_cov_trace_pc() {
  std::uint8_t& visits = block_visits[vesk::fuzz::block_of(__builtin_return_address(0))];
  if (visits < 255) ++visits;
}
void __sanitizer_cov_trace_cmp1(std::uint8_t, std::uint8_t) {} // a byte is found by trying
void __sanitizer_cov_trace_const_cmp1(std::uint8_t, std::uint8_t) {}
void __sanitizer_cov_trace_cmp2(std::uint16_t a, std::uint16_t b) {
  note(a, b, 2);
}
void __sanitizer_cov_trace_const_cmp2(std::uint16_t a, std::uint16_t b) {
  note(a, b, 2);
}
void __sanitizer_cov_trace_cmp4(std::uint32_t a, std::uint32_t b) {
  note(a, b, 4);
}
void __sanitizer_cov_trace_const_cmp4(std::uint32_t a, std::uint32_t b) {
  note(a, b, 4);
}
void __sanitizer_cov_trace_cmp8(std::uint64_t a, std::uint64_t b) {
  note(a, b, 8);
}
void __sanitizer_cov_trace_const_cmp8(std::uint64_t a, std::uint64_t b) {
  note(a, b, 8);
}
void __sanitizer_cov_trace_cmpf(float, float) {}
void __sanitizer_cov_trace_cmpd(double, double) {}
void __sanitizer_cov_trace_switch(std::uint64_t value, const std::uint64_t* cases) {
  for (std::uint64_t i = 0; i < cases[0]; ++i) note(value, cases[2 + i], static_cast<unsigned>(cases[1] / 8));
}
}
