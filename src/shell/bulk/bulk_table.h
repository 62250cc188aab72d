// The series of one stage, in the form that makes a step fastest.
#pragma once

#include "dataset/records.h"
#include "shell/bulk/bulk_kernels.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vesk {

// Used in three steps: `add` for each series in list order, `finish` once, then `update` with times that never go back.
// Points are shared with the data set, not copied; if the data set changes its points it makes its own copy, and the
// table stays the same. Series whose points are not in ascending order, or that contain not-a-number or the marker of
// an unset cursor, are evaluated by the plain algorithm, with cursors of the table.
class bulk_table {
public:
  explicit bulk_table(bulk_kernel kernel = best_bulk_kernel()) : kernel_(kernel) {}

  // A series that fills `element` of the engine's array. If several have the same element, the one added last counts.
  void add(std::size_t element, const point_list& points, bool step, const series_cursors& cursors);

  // An element that is always 0.
  void add_zero(std::size_t element) { add(element, {}, true, {}); }

  void finish();

  // Writes the value of every series at the date-time number `t` into the engine's array. `t` must not be less than in
  // the previous update, and its magnitude must be less than bulk_time_limit.
  void update(double t, float* array);

  // The cursors that the plain algorithm would have left in the series added as number `position`, from 0; unset if
  // there is no such series.
  series_cursors cursors(std::size_t position) const;

private:
  // The source of a row's next points. Read only when a row advances.
  struct source {
    const moment_value_pair_type* upcoming; // the point at `next`; past the end the last, or null if no update was
                                            // ever between two points
    const moment_value_pair_type* last;
    std::uint64_t rise_mask; // the bits of a difference that are kept in a row's delta: none for steps
  };
  struct added_series {
    std::size_t element;
    point_list points;
    series_cursors cursors; // moved only if `plain`
    bool step;
    bool plain;
    std::uint32_t row; // if the series is not plain
  };

  static constexpr std::size_t chunk_rows = 512;

  void place(std::uint32_t row, added_series& series);
  void advance_rows(const std::uint32_t* rows, std::size_t count, double t);
  void advance(std::size_t row, double t);
  void come_to_end(std::size_t row, double last_time);
  float value(std::size_t row, double t) const;
  void write_out(std::size_t first_row, std::size_t rows, float* array) const;

  bulk_kernel kernel_;
  std::vector<bulk_block> blocks_;      // the rows, in ascending order of elements; padded with idle ones
  std::vector<source> sources_;         // of each row
  std::vector<std::uint32_t> elements_; // of each row, and one more that differs from the last
  std::size_t rows_ = 0;
  std::vector<added_series> added_;
  std::vector<std::uint32_t> plain_;     // positions in added_
  std::vector<std::uint32_t> reached_;   // during an update: rows to advance
  alignas(64) float values_[chunk_rows]; // during an update: the values of a chunk
};

// Beyond this a constant value would not be exact. Far outside the range of moments.
inline constexpr double bulk_time_limit = 1e100;

} // namespace vesk
