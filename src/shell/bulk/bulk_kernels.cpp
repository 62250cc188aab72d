// The rounding of each operation is part of the result, so nothing here may be fused or reordered; see the compiler
// flags.
#include "shell/bulk/bulk_kernels.h"

#include <array>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vesk {

namespace {

std::size_t run_portable(const bulk_block* blocks, std::size_t block_count, double t, float* values,
                         std::uint32_t* reached) {
  std::size_t count = 0;
  for (std::size_t b = 0; b < block_count; ++b) {
    const bulk_block& rows = blocks[b];
    float* out = values + b * bulk_block_rows;
    for (std::size_t i = 0; i < bulk_block_rows; ++i)
      out[i] = static_cast<float>(rows.delta[i] * ((t - rows.previous[i]) / (rows.next[i] - rows.previous[i])) +
                                  rows.value[i]);
    for (std::size_t i = 0; i < bulk_block_rows; ++i) {
      reached[count] = static_cast<std::uint32_t>(b * bulk_block_rows + i);
      count += t >= rows.next[i] ? 1 : 0;
    }
  }
  return count;
}

#if defined(__x86_64__)

// For each byte, the positions of its set bits, packed to the front.
constexpr auto set_bits = [] {
  std::array<std::array<std::uint8_t, 8>, 256> table{};
  for (unsigned mask = 0; mask < 256; ++mask)
    for (unsigned bit = 0, n = 0; bit < 8; ++bit)
      if (mask >> bit & 1) table[mask][n++] = static_cast<std::uint8_t>(bit);
  return table;
}();

__attribute__((target("avx2"))) inline __m128 four_rows_avx2(const bulk_block& rows, std::size_t first, __m256d t,
                                                             __m256d next) {
  const __m256d previous = _mm256_load_pd(rows.previous + first);
  const __m256d part = _mm256_div_pd(_mm256_sub_pd(t, previous), _mm256_sub_pd(next, previous));
  const __m256d rise = _mm256_mul_pd(_mm256_load_pd(rows.delta + first), part);
  return _mm256_cvtpd_ps(_mm256_add_pd(rise, _mm256_load_pd(rows.value + first)));
}

__attribute__((target("avx2,popcnt"))) std::size_t run_avx2(const bulk_block* blocks, std::size_t block_count, double t,
                                                            float* values, std::uint32_t* reached) {
  const __m256d t4 = _mm256_set1_pd(t);
  std::size_t count = 0;
  for (std::size_t b = 0; b < block_count; ++b) {
    const bulk_block& rows = blocks[b];
    float* out = values + b * bulk_block_rows;
    const __m256d next_low = _mm256_load_pd(rows.next);
    const __m256d next_high = _mm256_load_pd(rows.next + 4);
    _mm_storeu_ps(out, four_rows_avx2(rows, 0, t4, next_low));
    _mm_storeu_ps(out + 4, four_rows_avx2(rows, 4, t4, next_high));
    const int mask = _mm256_movemask_pd(_mm256_cmp_pd(t4, next_low, _CMP_GE_OQ)) |
                     _mm256_movemask_pd(_mm256_cmp_pd(t4, next_high, _CMP_GE_OQ)) << 4;
    const auto bits = static_cast<unsigned>(mask);
    const __m128i packed = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(set_bits[bits].data()));
    const __m256i first = _mm256_set1_epi32(static_cast<int>(b * bulk_block_rows));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(reached + count),
                        _mm256_add_epi32(_mm256_cvtepu8_epi32(packed), first));
    count += static_cast<std::size_t>(__builtin_popcount(bits));
  }
  return count;
}

// Packs through a register, because a compressed store to memory is slow on some processors.
__attribute__((target("avx512f,avx512vl,popcnt"))) std::size_t
run_avx512(const bulk_block* blocks, std::size_t block_count, double t, float* values, std::uint32_t* reached) {
  const __m512d t8 = _mm512_set1_pd(t);
  constexpr __mmask8 all_eight = 0xff; // g++ 12 warns about the unmasked conversion
  const __m256i eight = _mm256_set1_epi32(bulk_block_rows);
  __m256i positions = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  std::size_t count = 0;
  for (std::size_t b = 0; b < block_count; ++b) {
    const bulk_block& rows = blocks[b];
    const __m512d next = _mm512_load_pd(rows.next);
    const __m512d previous = _mm512_load_pd(rows.previous);
    const __m512d part = _mm512_div_pd(_mm512_sub_pd(t8, previous), _mm512_sub_pd(next, previous));
    const __m512d rise = _mm512_mul_pd(_mm512_load_pd(rows.delta), part);
    _mm256_storeu_ps(values + b * bulk_block_rows,
                     _mm512_maskz_cvtpd_ps(all_eight, _mm512_add_pd(rise, _mm512_load_pd(rows.value))));
    const __mmask8 mask = _mm512_cmp_pd_mask(t8, next, _CMP_GE_OQ);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(reached + count), _mm256_maskz_compress_epi32(mask, positions));
    positions = _mm256_add_epi32(positions, eight);
    count += static_cast<std::size_t>(__builtin_popcount(mask));
  }
  return count;
}

bulk_kernel if_avx2() {
  return __builtin_cpu_supports("avx2") ? &run_avx2 : nullptr;
}
bulk_kernel if_avx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") ? &run_avx512 : nullptr;
}

#else

bulk_kernel if_avx2() {
  return nullptr;
}
bulk_kernel if_avx512() {
  return nullptr;
}

#endif

} // namespace

const bulk_kernel_choice (&bulk_kernels())[bulk_kernel_count] {
  static const bulk_kernel_choice choices[bulk_kernel_count] = {
      {.name = "portable", .run = &run_portable},
      {.name = "AVX2", .run = if_avx2()},
      {.name = "AVX-512", .run = if_avx512()},
  };
  return choices;
}

bulk_kernel best_bulk_kernel() {
  bulk_kernel best = nullptr;
  for (const bulk_kernel_choice& choice : bulk_kernels())
    if (choice.run) best = choice.run;
  return best;
}

} // namespace vesk
