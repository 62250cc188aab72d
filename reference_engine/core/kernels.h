// The innermost loop of an explicit step, in place and in wide vectors.
#ifndef REFERENCE_ENGINE_CORE_KERNELS_H
#define REFERENCE_ENGINE_CORE_KERNELS_H

#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace reference_engine {

// What all systems of a class share in consecutive segments, one value a segment.
struct AdvanceShares {
  const double* keep;     // share of the segment's own old concentration that stays
  const double* lower;    // share taken of the segment before
  const double* upper;    // share taken of the segment after
  const double* per_rate; // days times old volume / new volume
  double least;           // limit of the results
};

// One system in these segments. No array overlaps another.
struct AdvanceRow {
  const double* rate;    // g/m3/day, not read where nothing reacts
  double* values;        // concentrations, replaced in place
  double before, behind; // old concentrations on both sides of the segments
  double most;           // limit of the results
};

// For each row: new = keep old + lower old[-1] + upper old[+1], and where systems react + per_rate rate. `before`
// becomes the old concentration of the last segment, as the call for the next segments needs it. True when a
// result is outside its limits or is not a number. Every processor gives the same digits, however rows are grouped.
bool advance(std::size_t count, const AdvanceShares& shares, std::span<AdvanceRow> rows, bool reacts);

// A stage of the classic Runge-Kutta method: what all systems of a class share, one value a segment. Ratios and
// per_rate are read only where a volume changes.
struct StageShares {
  const double *out, *lower, *upper;   // of a whole step: what leaves, and comes from both sides
  std::array<const double*, 3> ratios; // of volumes: those of the stages before the last one to that of the next
  const double* per_rate;              // of a whole step: days times the volume's ratio
  double days;                         // of a whole step
  double reach;                        // the share of it that the stage's rates carry
};

// One system. `now` has a value before its first and one after its last segment.
struct StageRow {
  const double* now;
  std::array<const double*, 3> earlier; // of the stages before the last one
  const double* rate;                   // not read where nothing reacts
  double* next;                         // overlaps nothing
  double most;                          // limit of the results
};

// What a stage leads to: the next one, the end of the step, or a sum of all stages that is the end of the step.
enum class StageResult { stage, end, sum };

// For each row, with change = lower now[-1] - out now + upper now[+1] + per_rate rate and earlier masses by the ratios:
//     next = earlier[0] + reach change, and with a sum
//     next = (now - earlier[0] + earlier[1] + 2 earlier[2]) / 3 + reach change
// At the end of the step true when a result is below 0, above its limit or not a number. Every processor gives the same
// digits, however rows are grouped.
bool advance_stage(std::size_t count, const StageShares& shares, std::span<const StageRow> rows, StageResult result,
                   bool reacts, bool volumes_change);

// Loops over consecutive links and segments. Arrays of one call do not overlap, unless it says so.

// out = value, out = factor in, and out += factor in.
void set_all(std::size_t count, double value, double* out);
void set_multiple(std::size_t count, double factor, const double* in, double* out);
void add_multiple(std::size_t count, double factor, const double* in, double* out);

// Water by links before and after each segment: flow[k] comes to segment k from below, flow[k + 1] leaves it upwards.
// first: replaces the old values, here and below.
void add_outflow(std::size_t count, const double* flow, bool first, double* out);
// The same with the change of volume. After the last flows `out` is not written, and a change that is only the rounding
// of larger amounts becomes 0; returns how many changes are not 0 then.
std::size_t add_water(std::size_t count, const double* flow, bool first, bool last, double* change, double* out);
inline double without_rounding(double change, double out) {
  const double turnover = 2 * out + change; // what comes in and what goes out
  return std::abs(change) > 1e-12 * turnover ? change : 0;
}

// What links carry up from their lower segments and down from their upper ones, m3/day of the giver's concentration.
// The shares that are carried: of each lower segment, and in `shares + 1` of each upper one; null for all.
void add_flow(std::size_t links, const double* flow, const double* shares, bool first, double* up, double* down);
void add_exchange(std::size_t links, const double* exchange, const double* shares, bool first, double* up,
                  double* down);
// What a flow and an exchange carry, both whole.
void set_flow_and_exchange(std::size_t links, const double* flow, const double* exchange, double* up, double* down);
// What leaves each segment by the links on both sides.
void leave(std::size_t count, const double* up, const double* down, double* out);

// out = factor a b.
void set_product(std::size_t count, double factor, const double* a, const double* b, double* out);
// out = 1 / in.
void set_inverse(std::size_t count, const double* in, double* out);
// Shares of the concentrations on both sides and of the segment's own, by what links carry up and down in some days.
struct SharesOut {
  double *own, *lower, *upper;
};
// own: what stays, the ratio less what leaves. ratio: null for 1 everywhere.
void set_kept_shares(std::size_t count, double days, const double* ratio, const double* per_volume, const double* up,
                     const double* down, SharesOut into);
// own: what leaves.
void set_left_shares(std::size_t count, double days, const double* per_volume, const double* up, const double* down,
                     SharesOut into);

// largest = the larger of both, value by value.
void larger_of(std::size_t count, const double* values, double* largest);
// Whether no value is below 0 or not a number.
bool all_at_least_0(std::size_t count, const double* values);
// Whether a value is larger than `most`.
bool any_above(std::size_t count, const double* values, double most);
// The sum of a b, in one order on every processor.
double sum_of_products(std::size_t count, const double* a, const double* b);
// The largest out per_volume + decay.
double largest_turnover(std::size_t count, const double* out, const double* per_volume, const double* decay);

} // namespace reference_engine

#endif
