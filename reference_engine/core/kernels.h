// The innermost loop of an explicit step, in place and in wide vectors.
#ifndef REFERENCE_ENGINE_CORE_KERNELS_H
#define REFERENCE_ENGINE_CORE_KERNELS_H

#include <array>
#include <cstddef>
#include <span>

namespace reference_engine {

// What all systems of a class share in consecutive segments, one value a segment.
struct AdvanceShares {
  const double* keep;     // share of the segment's own old concentration that stays
  const double* lower;    // share taken of the segment before
  const double* upper;    // share taken of the segment behind
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
// becomes the old concentration of the last segment, as the next call on the segments behind needs it. True when a
// result lies outside its limits or is not a number. Every processor gives the same digits, whatever rows go together.
bool advance(std::size_t count, const AdvanceShares& shares, std::span<AdvanceRow> rows, bool reacts);

// A stage of an explicit method with several: what all systems of a class share, one value a segment.
struct StageShares {
  const double *out, *lower, *upper; // m3/day that leave, and come from the segment before and the one behind
  const double* per_gram;            // of their sum
  const double* keep;                // of this stage's concentrations
  const double* per_rate;
  std::array<const double*, 3> weights; // of earlier concentrations
};

// One system. `now` has a value before its first and one behind its last segment.
struct StageRow {
  const double* now;
  std::array<const double*, 3> earlier;
  const double* rate;
  double* next; // overlaps nothing
  double most;  // limit of the results
};

// For each row: next = per_gram (lower now[-1] - out now + upper now[+1]), and where earlier ones are given (0, 1 or 3)
// weights times them, and where systems react per_rate rate; with none or 3 of them keep now, too. With 3 true when a
// result is below 0, above its limit or not a number. Every processor gives the same digits, whatever rows go together.
bool advance_stage(std::size_t count, const StageShares& shares, std::span<const StageRow> rows, std::size_t earlier,
                   bool reacts);

// Loops over consecutive links and segments. Arrays of one call do not overlap, unless it says so.

// out = factor in, and out += factor in.
void set_multiple(std::size_t count, double factor, const double* in, double* out);
void add_multiple(std::size_t count, double factor, const double* in, double* out);

// Water by links before and after each segment: flow[k] comes to segment k from below, flow[k + 1] leaves it upwards.
// first: takes the place of what stands there, here and below.
void add_net_inflow(std::size_t count, const double* flow, bool first, double* change);
void add_outflow(std::size_t count, const double* flow, bool first, double* out);
// Sets a change that is only the rounding of larger amounts to 0. True when all are 0 then.
bool drop_rounding(std::size_t count, double* change, const double* out);

// What links carry up from their lower segments and down from their upper ones, m3/day of the giver's concentration.
// The shares that are carried: of each lower segment, and in `shares + 1` of each upper one; null for all.
void add_flow(std::size_t links, const double* flow, const double* shares, bool first, double* up, double* down);
void add_exchange(std::size_t links, const double* exchange, const double* shares, bool first, double* up,
                  double* down);
// What leaves each segment by the links on both sides.
void leave(std::size_t count, const double* up, const double* down, double* out);

// out = factor a b.
void set_product(std::size_t count, double factor, const double* a, const double* b, double* out);
// out = 1 / in.
void set_inverse(std::size_t count, const double* in, double* out);
// The shares that stay and come: keep = ratio - per_gram out, lower and upper = per_gram times theirs.
struct SharesOut {
  double *keep, *lower, *upper;
};
void set_shares(std::size_t count, const double* ratio, const double* per_gram, const double* out, const double* lower,
                const double* upper, SharesOut into);

// largest = the larger of both, value by value.
void larger_of(std::size_t count, const double* values, double* largest);
// Whether no value is below 0 or not a number.
bool all_at_least_0(std::size_t count, const double* values);
// Whether a value is larger than `most`.
bool any_above(std::size_t count, const double* values, double most);
// The largest out per_volume + decay.
double largest_turnover(std::size_t count, const double* out, const double* per_volume, const double* decay);

} // namespace reference_engine

#endif
