// Values of results-grid cells over the simulation time of the current run.
#pragma once

#include "charts/graph_form.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vesk {

struct live_cell {
  int row = 0, column = 0; // of the grid, from 0
  std::string label = {};  // "3, DO"
};

// Main thread only.
class live_samples {
public:
  static constexpr std::size_t most_cells = 50, most_samples = 100'000; // cells; samples per cell

  void clear();

  // Reads these cells at the last simulation time, a date-time number; further calls at the same time add nothing.
  // Cells that are no longer chosen keep their values. True: there is something new to draw.
  bool sample(double date_time, const std::vector<live_cell>& cells,
              const std::function<std::optional<double>(int row, int column)>& read);

  bool empty() const { return series_.empty(); }
  std::unique_ptr<TGraphForm> chart() const; // dots; null without samples

private:
  struct cell_series {
    live_cell cell;
    std::vector<double> times, values;
  };
  std::vector<cell_series> series_;
  double last_ = 0;
};

} // namespace vesk
