#include "core/kernels.h"

#include "core/dispatch.h"

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

template <std::size_t rows, StageResult to, bool reacts, bool moves>
[[gnu::always_inline]] inline bool stage_rows(std::size_t count, const StageShares& given, const StageRow* in) {
  constexpr double third = 1.0 / 3;
  const StageShares shares = given;
  StageRow row[rows];
  for (std::size_t r = 0; r < rows; ++r) row[r] = in[r];
  Mask inside{-1, -1, -1, -1};
  std::size_t k = 0;
  for (; k + width <= count; k += width) {
    const Vector out = vector(shares.out + k), lower = vector(shares.lower + k), upper = vector(shares.upper + k);
#pragma GCC unroll 4
    for (std::size_t r = 0; r < rows; ++r) {
      const double* const now = row[r].now + k;
      Vector change = lower * vector(now - 1) - out * vector(now) + upper * vector(now + 1);
      if constexpr (reacts && moves) change += vector(shares.per_rate + k) * vector(row[r].rate + k);
      if constexpr (reacts && !moves) change += shares.days * vector(row[r].rate + k);
      Vector base = vector(row[r].earlier[0] + k);
      if constexpr (moves) base *= vector(shares.ratios[0] + k);
      if constexpr (to == StageResult::sum) {
        Vector one = vector(row[r].earlier[1] + k), two = vector(row[r].earlier[2] + k);
        if constexpr (moves) one *= vector(shares.ratios[1] + k);
        if constexpr (moves) two *= vector(shares.ratios[2] + k);
        base = third * ((vector(now) - base) + (one + (two + two)));
      }
      const Vector result = base + shares.reach * change;
      *reinterpret_cast<Vector*>(row[r].next + k) = result;
      if constexpr (to != StageResult::stage) inside &= (result >= 0) & (result <= row[r].most);
    }
  }
  bool all_inside = (inside[0] & inside[1] & inside[2] & inside[3]) != 0;
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t i = k; i < count; ++i) {
      const double* const now = row[r].now + i;
      double change = shares.lower[i] * *(now - 1) - shares.out[i] * *now + shares.upper[i] * *(now + 1);
      if constexpr (reacts) change += (moves ? shares.per_rate[i] : shares.days) * row[r].rate[i];
      const auto earlier = [&](std::size_t stage) {
        return moves ? row[r].earlier[stage][i] * shares.ratios[stage][i] : row[r].earlier[stage][i];
      };
      double base = earlier(0);
      if constexpr (to == StageResult::sum) base = third * ((*now - base) + (earlier(1) + (earlier(2) + earlier(2))));
      const double result = base + shares.reach * change;
      row[r].next[i] = result;
      if constexpr (to != StageResult::stage) all_inside = all_inside && result >= 0 && result <= row[r].most;
    }
  }
  return !all_inside;
}

template <StageResult to, bool reacts, bool moves>
[[gnu::always_inline]] inline bool stage_all(std::size_t count, const StageShares& shares,
                                             std::span<const StageRow> rows) {
  constexpr std::size_t most = to == StageResult::sum ? 2 : most_rows; // each earlier one takes an address
  bool any_outside = false;
  while (!rows.empty()) {
    const std::size_t together = rows.size() == most_rows + 1 ? 2 : std::min(rows.size(), most);
    const bool outside = together == 3   ? stage_rows<3, to, reacts, moves>(count, shares, rows.data())
                         : together == 2 ? stage_rows<2, to, reacts, moves>(count, shares, rows.data())
                                         : stage_rows<1, to, reacts, moves>(count, shares, rows.data());
    any_outside = any_outside || outside;
    rows = rows.subspan(together);
  }
  return any_outside;
}

template <StageResult to>
[[gnu::always_inline]] inline bool stage_to(std::size_t count, const StageShares& shares,
                                            std::span<const StageRow> rows, bool reacts, bool moves) {
  if (reacts && moves) return stage_all<to, true, true>(count, shares, rows);
  if (reacts) return stage_all<to, true, false>(count, shares, rows);
  if (moves) return stage_all<to, false, true>(count, shares, rows);
  return stage_all<to, false, false>(count, shares, rows);
}

[[gnu::always_inline]] inline bool any_stage(std::size_t count, const StageShares& shares,
                                             std::span<const StageRow> rows, StageResult to, bool reacts, bool moves) {
  if (to == StageResult::stage) return stage_to<StageResult::stage>(count, shares, rows, reacts, moves);
  if (to == StageResult::end) return stage_to<StageResult::end>(count, shares, rows, reacts, moves);
  return stage_to<StageResult::sum>(count, shares, rows, reacts, moves);
}

[[gnu::always_inline]] inline void set_all_loop(std::size_t count, double value, double* out) {
  for (std::size_t k = 0; k < count; ++k) out[k] = value;
}

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
[[gnu::always_inline]] inline void outflow_of(std::size_t count, const double* __restrict flow,
                                              double* __restrict out) {
  for (std::size_t k = 0; k < count; ++k) put<first>(out[k], part_above_0(flow[k + 1]) + part_above_0(-flow[k]));
}
[[gnu::always_inline]] inline void add_outflow_loop(std::size_t count, const double* flow, bool first, double* out) {
  first ? outflow_of<true>(count, flow, out) : outflow_of<false>(count, flow, out);
}

// How many are left is counted in whole numbers: of those the compiler makes one count for each lane.
template <bool first, bool last>
[[gnu::always_inline]] inline std::size_t water_of(std::size_t count, const double* __restrict flow,
                                                   double* __restrict change, double* __restrict out) {
  std::int64_t moving = 0;
  for (std::size_t k = 0; k < count; ++k) {
    const double net = (first ? 0 : change[k]) + (flow[k] - flow[k + 1]);
    const double leaves = (first ? 0 : out[k]) + (part_above_0(flow[k + 1]) + part_above_0(-flow[k]));
    change[k] = last ? without_rounding(net, leaves) : net;
    if constexpr (!last) out[k] = leaves;
    if constexpr (last) moving += change[k] != 0 ? 1 : 0;
  }
  return static_cast<std::size_t>(moving);
}
[[gnu::always_inline]] inline std::size_t add_water_loop(std::size_t count, const double* flow, bool first, bool last,
                                                         double* change, double* out) {
  if (first)
    return last ? water_of<true, true>(count, flow, change, out) : water_of<true, false>(count, flow, change, out);
  return last ? water_of<false, true>(count, flow, change, out) : water_of<false, false>(count, flow, change, out);
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

[[gnu::always_inline]] inline void set_flow_and_exchange_loop(std::size_t links, const double* __restrict flow,
                                                              const double* __restrict exchange, double* __restrict up,
                                                              double* __restrict down) {
  for (std::size_t k = 0; k < links; ++k) {
    up[k] = FlowParts::up(flow[k]) + exchange[k];
    down[k] = FlowParts::down(flow[k]) + exchange[k];
  }
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

template <class Own>
[[gnu::always_inline]] inline void shares_of(std::size_t count, double days, const double* __restrict per_volume,
                                             const double* __restrict up, const double* __restrict down, SharesOut into,
                                             Own own_of) {
  double* __restrict const own = into.own;
  double* __restrict const lower = into.lower;
  double* __restrict const upper = into.upper;
  for (std::size_t k = 0; k < count; ++k) {
    const double per_gram = days * per_volume[k];
    own[k] = own_of(k, per_gram * (up[k + 1] + down[k]));
    lower[k] = per_gram * up[k];
    upper[k] = per_gram * down[k + 1];
  }
}
[[gnu::always_inline]] inline void set_kept_shares_loop(std::size_t count, double days, const double* ratio,
                                                        const double* per_volume, const double* up, const double* down,
                                                        SharesOut into) {
  if (ratio == nullptr)
    shares_of(count, days, per_volume, up, down, into, [](std::size_t, double out) { return 1 - out; });
  else
    shares_of(count, days, per_volume, up, down, into, [=](std::size_t k, double out) { return ratio[k] - out; });
}
[[gnu::always_inline]] inline void set_left_shares_loop(std::size_t count, double days, const double* per_volume,
                                                        const double* up, const double* down, SharesOut into) {
  shares_of(count, days, per_volume, up, down, into, [](std::size_t, double out) { return out; });
}

[[gnu::always_inline]] inline void larger_of_loop(std::size_t count, const double* __restrict values,
                                                  double* __restrict largest) {
  for (std::size_t k = 0; k < count; ++k) largest[k] = values[k] > largest[k] ? values[k] : largest[k];
}

[[gnu::always_inline]] inline bool all_at_least_0_loop(std::size_t count, const double* __restrict values) {
  std::int64_t others = 0; // whole numbers can be added in any order, in lanes
  for (std::size_t k = 0; k < count; ++k) others += values[k] >= 0 ? 0 : 1;
  return others == 0;
}

[[gnu::always_inline]] inline bool any_above_loop(std::size_t count, const double* __restrict values, double most) {
  std::int64_t excess = 0;
  for (std::size_t k = 0; k < count; ++k) excess += values[k] > most ? 1 : 0;
  return excess > 0;
}

// Sums side by side: one alone would wait for each addition.
[[gnu::always_inline]] inline double sum_of_products_loop(std::size_t count, const double* a, const double* b) {
  Vector sums[2] = {};
  std::size_t k = 0;
  for (; k + 2 * width <= count; k += 2 * width) {
    sums[0] += vector(a + k) * vector(b + k);
    sums[1] += vector(a + k + width) * vector(b + k + width);
  }
  sums[0] += sums[1];
  double sum = (sums[0][0] + sums[0][1]) + (sums[0][2] + sums[0][3]);
  for (; k < count; ++k) sum += a[k] * b[k];
  return sum;
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
bool advance_stage(std::size_t count, const StageShares& shares, std::span<const StageRow> rows, StageResult result,
                   bool reacts, bool volumes_change) {
  return Dispatch<&any_stage>::best(count, shares, rows, result, reacts, volumes_change);
}
void set_all(std::size_t count, double value, double* out) {
  Dispatch<&set_all_loop>::best(count, value, out);
}
void set_multiple(std::size_t count, double factor, const double* in, double* out) {
  Dispatch<&set_multiple_loop>::best(count, factor, in, out);
}
void add_multiple(std::size_t count, double factor, const double* in, double* out) {
  Dispatch<&add_multiple_loop>::best(count, factor, in, out);
}
std::size_t add_water(std::size_t count, const double* flow, bool first, bool last, double* change, double* out) {
  return Dispatch<&add_water_loop>::best(count, flow, first, last, change, out);
}
void add_outflow(std::size_t count, const double* flow, bool first, double* out) {
  Dispatch<&add_outflow_loop>::best(count, flow, first, out);
}
void add_flow(std::size_t links, const double* flow, const double* shares, bool first, double* up, double* down) {
  Dispatch<&add_carried<FlowParts>>::best(links, flow, shares, first, up, down);
}
void add_exchange(std::size_t links, const double* exchange, const double* shares, bool first, double* up,
                  double* down) {
  Dispatch<&add_carried<ExchangeParts>>::best(links, exchange, shares, first, up, down);
}
void set_flow_and_exchange(std::size_t links, const double* flow, const double* exchange, double* up, double* down) {
  Dispatch<&set_flow_and_exchange_loop>::best(links, flow, exchange, up, down);
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
void set_kept_shares(std::size_t count, double days, const double* ratio, const double* per_volume, const double* up,
                     const double* down, SharesOut into) {
  Dispatch<&set_kept_shares_loop>::best(count, days, ratio, per_volume, up, down, into);
}
void set_left_shares(std::size_t count, double days, const double* per_volume, const double* up, const double* down,
                     SharesOut into) {
  Dispatch<&set_left_shares_loop>::best(count, days, per_volume, up, down, into);
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
double sum_of_products(std::size_t count, const double* a, const double* b) {
  return Dispatch<&sum_of_products_loop>::best(count, a, b);
}
double largest_turnover(std::size_t count, const double* out, const double* per_volume, const double* decay) {
  return Dispatch<&largest_turnover_loop>::best(count, out, per_volume, decay);
}

} // namespace reference_engine
