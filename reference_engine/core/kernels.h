// The innermost loop of an explicit step, in place and in wide vectors.
#ifndef REFERENCE_ENGINE_CORE_KERNELS_H
#define REFERENCE_ENGINE_CORE_KERNELS_H

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

} // namespace reference_engine

#endif
