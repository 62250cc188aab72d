// The chosen series of the other scenarios minus those of the baseline.
#pragma once

#include "charts/grid.h"
#include "viewer/series_store.h"

#include <vector>

namespace vesk {

// One for each series that both scenarios have, at the times of the baseline; the other scenario's values are
// interpolated linearly. Variable, segment, units and colour are those of the series, the scenario is the other one.
std::vector<shown_series> differences(const std::vector<shown_series>& series, std::size_t baseline);

// A summary of each difference over all times.
class difference_summary final : public grid {
public:
  difference_summary();

  void show(const std::vector<shown_series>& differences, const std::vector<shown_series>& series,
            std::size_t baseline);

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override { return rows_.size(); }
  cell_value value(std::size_t row, std::size_t column) const override;
  void set_value(std::size_t, std::size_t, const cell_value&) override {}

private:
  std::vector<grid_column> columns_;
  std::vector<std::vector<cell_value>> rows_;
};

} // namespace vesk
