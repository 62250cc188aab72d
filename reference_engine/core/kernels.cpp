#include "core/kernels.h"

#include <algorithm>
#include <cmath>
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

[[gnu::always_inline]] inline bool advance_rows_of_any_number(std::size_t count, const AdvanceShares& shares,
                                                              std::span<AdvanceRow> rows, bool reacts) {
  return reacts ? advance_all<true>(count, shares, rows) : advance_all<false>(count, shares, rows);
}

template <std::size_t rows, std::size_t earlier, bool reacts>
[[gnu::always_inline]] inline bool stage_rows(std::size_t count, const StageShares& given, const StageRow* in) {
  const StageShares shares = given;
  StageRow row[rows];
  for (std::size_t r = 0; r < rows; ++r) row[r] = in[r];
  Mask inside{-1, -1, -1, -1};
  std::size_t k = 0;
  for (; k + width <= count; k += width) {
    const Vector out = vector(shares.out + k), lower = vector(shares.lower + k), upper = vector(shares.upper + k);
    const Vector per_gram = vector(shares.per_gram + k);
#pragma GCC unroll 4
    for (std::size_t r = 0; r < rows; ++r) {
      const double* const now = row[r].now + k;
      Vector result = per_gram * (lower * vector(now - 1) - out * vector(now) + upper * vector(now + 1));
      if constexpr (earlier != 1) result += vector(shares.keep + k) * vector(now);
      for (std::size_t e = 0; e < earlier; ++e) result += vector(shares.weights[e] + k) * vector(row[r].earlier[e] + k);
      if constexpr (reacts) result += vector(shares.per_rate + k) * vector(row[r].rate + k);
      *reinterpret_cast<Vector*>(row[r].next + k) = result;
      if constexpr (earlier > 1) inside &= (result >= 0) & (result <= row[r].most);
    }
  }
  bool all_inside = (inside[0] & inside[1] & inside[2] & inside[3]) != 0;
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t i = k; i < count; ++i) {
      const double* const now = row[r].now + i;
      double result =
          shares.per_gram[i] * (shares.lower[i] * *(now - 1) - shares.out[i] * *now + shares.upper[i] * *(now + 1));
      if constexpr (earlier != 1) result += shares.keep[i] * *now;
      for (std::size_t e = 0; e < earlier; ++e) result += shares.weights[e][i] * row[r].earlier[e][i];
      if constexpr (reacts) result += shares.per_rate[i] * row[r].rate[i];
      row[r].next[i] = result;
      if constexpr (earlier > 1) all_inside = all_inside && result >= 0 && result <= row[r].most;
    }
  }
  return !all_inside;
}

template <std::size_t earlier, bool reacts>
[[gnu::always_inline]] inline bool stage_all(std::size_t count, const StageShares& shares,
                                             std::span<const StageRow> rows) {
  constexpr std::size_t most = earlier > 1 ? 2 : most_rows; // each earlier one takes an address
  bool any_outside = false;
  while (!rows.empty()) {
    const std::size_t together = rows.size() == most_rows + 1 ? 2 : std::min(rows.size(), most);
    const bool outside = together == 3   ? stage_rows<3, earlier, reacts>(count, shares, rows.data())
                         : together == 2 ? stage_rows<2, earlier, reacts>(count, shares, rows.data())
                                         : stage_rows<1, earlier, reacts>(count, shares, rows.data());
    any_outside = any_outside || outside;
    rows = rows.subspan(together);
  }
  return any_outside;
}

[[gnu::always_inline]] inline bool stage_of_any_kind(std::size_t count, const StageShares& shares,
                                                     std::span<const StageRow> rows, std::size_t earlier, bool reacts) {
  if (earlier == 0) return reacts ? stage_all<0, true>(count, shares, rows) : stage_all<0, false>(count, shares, rows);
  if (earlier == 1) return reacts ? stage_all<1, true>(count, shares, rows) : stage_all<1, false>(count, shares, rows);
  return reacts ? stage_all<3, true>(count, shares, rows) : stage_all<3, false>(count, shares, rows);
}

// A kernel twice, for any processor and for one with wide vectors, and the one that this processor can run.
template <auto kernel>
struct Dispatch;
template <class Result, class... Argument, Result (*kernel)(Argument...)>
struct Dispatch<kernel> {
  static Result portable(Argument... argument) { return kernel(argument...); }
#ifdef __x86_64__
  [[gnu::target("avx2")]] static Result wide(Argument... argument) {
    return kernel(argument...);
  }
  static inline Result (*const best)(Argument...) = __builtin_cpu_supports("avx2") > 0 ? wide : portable;
#else
  static constexpr Result (*best)(Argument...) = portable;
#endif
};

[[gnu::always_inline]] inline void set_multiple_loop(std::size_t count, double factor, const double* __restrict in,
                                                     double* __restrict out) {
  for (std::size_t k = 0; k < count; ++k) out[k] = factor * in[k];
}

[[gnu::always_inline]] inline void add_multiple_loop(std::size_t count, double factor, const double* __restrict in,
                                                     double* __restrict out) {
  for (std::size_t k = 0; k < count; ++k) out[k] += factor * in[k];
}

[[gnu::always_inline]] inline double part_above_0(double value) {
  return value > 0 ? value : 0;
}

template <bool first>
[[gnu::always_inline]] inline void put(double& into, double value) {
  into = first ? value : into + value;
}
template <bool first>
[[gnu::always_inline]] inline void net_inflow_of(std::size_t count, const double* __restrict flow,
                                                 double* __restrict change) {
  for (std::size_t k = 0; k < count; ++k) put<first>(change[k], flow[k] - flow[k + 1]);
}
[[gnu::always_inline]] inline void add_net_inflow_loop(std::size_t count, const double* flow, bool first,
                                                       double* change) {
  first ? net_inflow_of<true>(count, flow, change) : net_inflow_of<false>(count, flow, change);
}

template <bool first>
[[gnu::always_inline]] inline void outflow_of(std::size_t count, const double* __restrict flow,
                                              double* __restrict out) {
  for (std::size_t k = 0; k < count; ++k) put<first>(out[k], part_above_0(flow[k + 1]) + part_above_0(-flow[k]));
}
[[gnu::always_inline]] inline void add_outflow_loop(std::size_t count, const double* flow, bool first, double* out) {
  first ? outflow_of<true>(count, flow, out) : outflow_of<false>(count, flow, out);
}

[[gnu::always_inline]] inline bool drop_rounding_loop(std::size_t count, double* __restrict change,
                                                      const double* __restrict out) {
  double left = 0;
  for (std::size_t k = 0; k < count; ++k) {
    const double turnover = 2 * out[k] + change[k], size = std::abs(change[k]); // what comes in and what goes out
    change[k] = size > 1e-12 * turnover ? change[k] : 0;
    left += std::abs(change[k]);
  }
  return left == 0;
}

// How much of a link's value goes up and down.
struct FlowParts {
  static double up(double flow) { return part_above_0(flow); }
  static double down(double flow) { return part_above_0(-flow); }
};
struct ExchangeParts {
  static double up(double exchange) { return exchange; }
  static double down(double exchange) { return exchange; }
};

template <class Parts, bool first>
[[gnu::always_inline]] inline void carry(std::size_t links, const double* __restrict value,
                                         const double* __restrict shares, double* __restrict up,
                                         double* __restrict down) {
  if (shares == nullptr) {
    for (std::size_t k = 0; k < links; ++k) {
      put<first>(up[k], Parts::up(value[k]));
      put<first>(down[k], Parts::down(value[k]));
    }
  } else {
    for (std::size_t k = 0; k < links; ++k) {
      put<first>(up[k], Parts::up(value[k]) * shares[k]);
      put<first>(down[k], Parts::down(value[k]) * shares[k + 1]);
    }
  }
}

template <class Parts>
[[gnu::always_inline]] inline void add_carried(std::size_t links, const double* value, const double* shares, bool first,
                                               double* up, double* down) {
  if (first)
    carry<Parts, true>(links, value, shares, up, down);
  else
    carry<Parts, false>(links, value, shares, up, down);
}

[[gnu::always_inline]] inline void leave_loop(std::size_t count, const double* __restrict up,
                                              const double* __restrict down, double* __restrict out) {
  for (std::size_t k = 0; k < count; ++k) out[k] = up[k + 1] + down[k];
}

[[gnu::always_inline]] inline void set_product_loop(std::size_t count, double factor, const double* __restrict a,
                                                    const double* __restrict b, double* __restrict out) {
  for (std::size_t k = 0; k < count; ++k) out[k] = factor * a[k] * b[k];
}

[[gnu::always_inline]] inline void set_inverse_loop(std::size_t count, const double* __restrict in,
                                                    double* __restrict out) {
  for (std::size_t k = 0; k < count; ++k) out[k] = 1 / in[k];
}

[[gnu::always_inline]] inline void set_shares_loop(std::size_t count, const double* __restrict ratio,
                                                   const double* __restrict per_gram, const double* __restrict out,
                                                   const double* __restrict lower, const double* __restrict upper,
                                                   SharesOut into) {
  double* __restrict const keep = into.keep;
  double* __restrict const from_lower = into.lower;
  double* __restrict const from_upper = into.upper;
  for (std::size_t k = 0; k < count; ++k) {
    keep[k] = ratio[k] - per_gram[k] * out[k];
    from_lower[k] = per_gram[k] * lower[k];
    from_upper[k] = per_gram[k] * upper[k];
  }
}

[[gnu::always_inline]] inline void larger_of_loop(std::size_t count, const double* __restrict values,
                                                  double* __restrict largest) {
  for (std::size_t k = 0; k < count; ++k) largest[k] = values[k] > largest[k] ? values[k] : largest[k];
}

[[gnu::always_inline]] inline bool all_at_least_0_loop(std::size_t count, const double* __restrict values) {
  double others = 0; // a sum can be worked out in any order, in lanes, unlike a search
  for (std::size_t k = 0; k < count; ++k) others += values[k] >= 0 ? 0 : 1;
  return others == 0;
}

[[gnu::always_inline]] inline bool any_above_loop(std::size_t count, const double* __restrict values, double most) {
  double excess = 0;
  for (std::size_t k = 0; k < count; ++k) excess += values[k] > most ? 1 : 0;
  return excess > 0;
}

[[gnu::always_inline]] inline double largest_turnover_loop(std::size_t count, const double* __restrict out,
                                                           const double* __restrict per_volume,
                                                           const double* __restrict decay) {
  constexpr std::size_t lanes = 8; // maxima side by side: one alone would wait for itself
  double largest[lanes] = {};
  const auto take = [&](std::size_t lane, std::size_t k) {
    const double turnover = out[k] * per_volume[k] + decay[k];
    largest[lane] = turnover > largest[lane] ? turnover : largest[lane];
  };
  std::size_t k = 0;
  for (; k + lanes <= count; k += lanes)
    for (std::size_t lane = 0; lane < lanes; ++lane) take(lane, k + lane);
  for (; k < count; ++k) take(0, k);
  return *std::max_element(largest, largest + lanes);
}

} // namespace

bool advance(std::size_t count, const AdvanceShares& shares, std::span<AdvanceRow> rows, bool reacts) {
  return Dispatch<&advance_rows_of_any_number>::best(count, shares, rows, reacts);
}
bool advance_stage(std::size_t count, const StageShares& shares, std::span<const StageRow> rows, std::size_t earlier,
                   bool reacts) {
  return Dispatch<&stage_of_any_kind>::best(count, shares, rows, earlier, reacts);
}
void set_multiple(std::size_t count, double factor, const double* in, double* out) {
  Dispatch<&set_multiple_loop>::best(count, factor, in, out);
}
void add_multiple(std::size_t count, double factor, const double* in, double* out) {
  Dispatch<&add_multiple_loop>::best(count, factor, in, out);
}
void add_net_inflow(std::size_t count, const double* flow, bool first, double* change) {
  Dispatch<&add_net_inflow_loop>::best(count, flow, first, change);
}
void add_outflow(std::size_t count, const double* flow, bool first, double* out) {
  Dispatch<&add_outflow_loop>::best(count, flow, first, out);
}
bool drop_rounding(std::size_t count, double* change, const double* out) {
  return Dispatch<&drop_rounding_loop>::best(count, change, out);
}
void add_flow(std::size_t links, const double* flow, const double* shares, bool first, double* up, double* down) {
  Dispatch<&add_carried<FlowParts>>::best(links, flow, shares, first, up, down);
}
void add_exchange(std::size_t links, const double* exchange, const double* shares, bool first, double* up,
                  double* down) {
  Dispatch<&add_carried<ExchangeParts>>::best(links, exchange, shares, first, up, down);
}
void leave(std::size_t count, const double* up, const double* down, double* out) {
  Dispatch<&leave_loop>::best(count, up, down, out);
}
void set_product(std::size_t count, double factor, const double* a, const double* b, double* out) {
  Dispatch<&set_product_loop>::best(count, factor, a, b, out);
}
void set_inverse(std::size_t count, const double* in, double* out) {
  Dispatch<&set_inverse_loop>::best(count, in, out);
}
void set_shares(std::size_t count, const double* ratio, const double* per_gram, const double* out, const double* lower,
                const double* upper, SharesOut into) {
  Dispatch<&set_shares_loop>::best(count, ratio, per_gram, out, lower, upper, into);
}
void larger_of(std::size_t count, const double* values, double* largest) {
  Dispatch<&larger_of_loop>::best(count, values, largest);
}
bool all_at_least_0(std::size_t count, const double* values) {
  return Dispatch<&all_at_least_0_loop>::best(count, values);
}
bool any_above(std::size_t count, const double* values, double most) {
  return Dispatch<&any_above_loop>::best(count, values, most);
}
double largest_turnover(std::size_t count, const double* out, const double* per_volume, const double* decay) {
  return Dispatch<&largest_turnover_loop>::best(count, out, per_volume, decay);
}

} // namespace reference_engine
