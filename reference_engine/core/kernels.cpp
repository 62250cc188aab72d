#include "core/kernels.h"

#include <algorithm>
#include <cstdint>

namespace reference_engine {

namespace {

// The compiler makes of these what the processor has. They are read from any address that a double may have.
constexpr std::size_t width = 4;
using Vector [[gnu::vector_size(width * sizeof(double)), gnu::aligned(alignof(double)), gnu::may_alias]] = double;
using Mask [[gnu::vector_size(width * sizeof(double))]] = std::int64_t;

[[gnu::always_inline]] inline const Vector& vector(const double* at) {
  return *reinterpret_cast<const Vector*>(at);
}

// Rows side by side, so that each share is loaded once for all of them.
template <std::size_t rows, bool reacts>
[[gnu::always_inline]] inline bool advance_rows(std::size_t count, const AdvanceShares& given, AdvanceRow* out) {
  const AdvanceShares shares = given; // nothing that is written can change these
  AdvanceRow row[rows];
  for (std::size_t r = 0; r < rows; ++r) row[r] = out[r];
  Mask inside{-1, -1, -1, -1};
  std::size_t k = 0;
  if (count >= 2 * width) {
    Vector left[rows];
    for (std::size_t r = 0; r < rows; ++r) {
      const double first[width] = {row[r].before, row[r].values[0], row[r].values[1], row[r].values[2]};
      left[r] = vector(first);
    }
    for (; k + 2 * width <= count; k += width) {
      const Vector keep = vector(shares.keep + k), lower = vector(shares.lower + k), upper = vector(shares.upper + k);
#pragma GCC unroll 4
      for (std::size_t r = 0; r < rows; ++r) {
        double* const values = row[r].values + k;
        Vector result = keep * vector(values) + lower * left[r] + upper * vector(values + 1);
        if constexpr (reacts) result += vector(shares.per_rate + k) * vector(row[r].rate + k);
        left[r] = vector(values + width - 1); // before the old value that both vectors need is replaced
        *reinterpret_cast<Vector*>(values) = result;
        inside &= (result >= shares.least) & (result <= row[r].most);
      }
    }
    for (std::size_t r = 0; r < rows; ++r) row[r].before = left[r][0];
  }
  bool all_inside = (inside[0] & inside[1] & inside[2] & inside[3]) != 0;
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t i = k; i < count; ++i) {
      double* const values = row[r].values;
      const double old = values[i], behind = i + 1 < count ? values[i + 1] : row[r].behind;
      double result = shares.keep[i] * old + shares.lower[i] * row[r].before + shares.upper[i] * behind;
      if constexpr (reacts) result += shares.per_rate[i] * row[r].rate[i];
      values[i] = result;
      row[r].before = old;
      all_inside = all_inside && result >= shares.least && result <= row[r].most;
    }
    out[r].before = row[r].before;
  }
  return !all_inside;
}

// As many as the registers of a processor with 16 of them hold.
constexpr std::size_t most_rows = 3;

template <bool reacts>
[[gnu::always_inline]] inline bool advance_all(std::size_t count, const AdvanceShares& shares,
                                               std::span<AdvanceRow> rows) {
  bool any_outside = false;
  while (!rows.empty()) {
    // Four rows are two pairs: a row alone costs most.
    const std::size_t together = rows.size() == most_rows + 1 ? 2 : std::min(rows.size(), most_rows);
    const bool outside = together == 3   ? advance_rows<3, reacts>(count, shares, rows.data())
                         : together == 2 ? advance_rows<2, reacts>(count, shares, rows.data())
                                         : advance_rows<1, reacts>(count, shares, rows.data());
    any_outside = any_outside || outside;
    rows = rows.subspan(together);
  }
  return any_outside;
}

bool advance_portable(std::size_t count, const AdvanceShares& shares, std::span<AdvanceRow> rows, bool reacts) {
  return reacts ? advance_all<true>(count, shares, rows) : advance_all<false>(count, shares, rows);
}

using Kernel = bool (*)(std::size_t, const AdvanceShares&, std::span<AdvanceRow>, bool);

#ifdef __x86_64__
[[gnu::target("avx2")]] bool advance_avx2(std::size_t count, const AdvanceShares& shares, std::span<AdvanceRow> rows,
                                          bool reacts) {
  return reacts ? advance_all<true>(count, shares, rows) : advance_all<false>(count, shares, rows);
}
Kernel widest() {
  return __builtin_cpu_supports("avx2") > 0 ? advance_avx2 : advance_portable;
}
#else
Kernel widest() {
  return advance_portable;
}
#endif

const Kernel kernel = widest();

} // namespace

bool advance(std::size_t count, const AdvanceShares& shares, std::span<AdvanceRow> rows, bool reacts) {
  return kernel(count, shares, rows, reacts);
}

} // namespace reference_engine
