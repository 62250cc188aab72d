// The results grid's view of the engine's array, which is borrowed, and read while the engine writes it.
#pragma once

#include <mutex>
#include <optional>

namespace vesk {

class results_grid {
public:
  void initialize(int rows) { rows_ = rows; } // main thread

  // Any thread. `data` belongs to the engine; null: no array.
  void set_data(const float* data, int actual_columns, int actual_rows, bool invert);
  void clear_data() { set_data(nullptr, 0, 0, false); }

  // The element at a row and column of the grid, both from 0; nothing without an array or outside it. Main thread.
  std::optional<double> cell(int row, int column) const;

private:
  int rows_ = 0; // as initialized by the engine; main thread
  mutable std::mutex lock_;
  const float* grid_data = nullptr; // this and the next three are guarded by lock_
  int grid_actual_columns = 0;
  int grid_actual_rows = 0;
  bool grid_invert = false;
};

} // namespace vesk
