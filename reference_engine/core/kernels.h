// The innermost loop of an explicit step, in place and in wide vectors.
#ifndef REFERENCE_ENGINE_CORE_KERNELS_H
#define REFERENCE_ENGINE_CORE_KERNELS_H

#include <cstddef>

namespace reference_engine {

// One system in consecutive segments. All arrays hold one value a segment and do not overlap.
struct Advance {
  const double* keep;     // share of the segment's own old concentration that stays
  const double* lower;    // share taken of the segment before
  const double* upper;    // share taken of the segment behind
  const double* per_rate; // days times old volume / new volume
  const double* rate;     // g/m3/day; null: nothing reacts, and per_rate is not read
  double* values;         // concentrations, replaced in place
  double before, behind;  // old concentrations on both sides of the segments
  double least, most;     // limits of the result
};

// new = keep old + lower old[-1] + upper old[+1] + per_rate rate. `before` becomes the old concentration of the last
// segment, as the next call on the segments behind needs it. True when a result lies outside its limits or is not a
// number. Every processor gives the same digits.
bool advance(std::size_t count, Advance& row);

} // namespace reference_engine

#endif
