#include "app/results_grid.h"

#include <cstddef>

namespace vesk {

void results_grid::set_data(const float* data, int actual_columns, int actual_rows, bool invert) {
  const std::lock_guard guard(lock_);
  grid_data = data;
  grid_actual_columns = actual_columns;
  grid_actual_rows = actual_rows;
  grid_invert = invert;
}

std::optional<double> results_grid::cell(int row, int column) const {
  const std::lock_guard guard(lock_);
  if (!grid_data || row < 0 || row >= rows_ || column < 0) return {};
  // Both layouts have a stride of grid_actual_columns; grid_actual_rows is only an upper bound.
  const int inner = grid_invert ? row : column, outer = grid_invert ? column : row;
  if (inner >= grid_actual_columns || outer >= grid_actual_rows) return {}; // outside the engine's array
  return static_cast<double>(grid_data[inner + std::ptrdiff_t{outer} * grid_actual_columns]);
}

} // namespace vesk
