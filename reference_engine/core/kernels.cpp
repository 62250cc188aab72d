#include "core/kernels.h"

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

template <bool reacts>
[[gnu::always_inline]] inline bool advance_row(std::size_t count, Advance& row) {
  const double *keep = row.keep, *lower = row.lower, *upper = row.upper, *per_rate = row.per_rate, *rate = row.rate;
  double* values = row.values;
  const double least = row.least, most = row.most;
  Mask inside{-1, -1, -1, -1};
  std::size_t k = 0;
  if (count >= 2 * width) {
    Vector left{row.before, values[0], values[1], values[2]};
    for (; k + 2 * width <= count; k += width) {
      Vector result =
          vector(keep + k) * vector(values + k) + vector(lower + k) * left + vector(upper + k) * vector(values + k + 1);
      if constexpr (reacts) result += vector(per_rate + k) * vector(rate + k);
      left = vector(values + k + width - 1); // before the old value that both vectors need is replaced
      *reinterpret_cast<Vector*>(values + k) = result;
      inside &= (result >= least) & (result <= most);
    }
    row.before = left[0];
  }
  bool all_inside = (inside[0] & inside[1] & inside[2] & inside[3]) != 0;
  for (; k < count; ++k) {
    const double old = values[k], behind = k + 1 < count ? values[k + 1] : row.behind;
    double result = keep[k] * old + lower[k] * row.before + upper[k] * behind;
    if constexpr (reacts) result += per_rate[k] * rate[k];
    values[k] = result;
    row.before = old;
    all_inside = all_inside && result >= least && result <= most;
  }
  return !all_inside;
}

bool advance_portable(std::size_t count, Advance& row) {
  return row.rate != nullptr ? advance_row<true>(count, row) : advance_row<false>(count, row);
}

using Kernel = bool (*)(std::size_t, Advance&);

#ifdef __x86_64__
[[gnu::target("avx2")]] bool advance_avx2(std::size_t count, Advance& row) {
  return row.rate != nullptr ? advance_row<true>(count, row) : advance_row<false>(count, row);
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

bool advance(std::size_t count, Advance& row) {
  return kernel(count, row);
}

} // namespace reference_engine
