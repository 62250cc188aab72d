// The chosen series as a table: a row for each time of the baseline, a column for each series.
#pragma once

#include "charts/grid.h"
#include "viewer/series_store.h"

#include <vector>

namespace vesk {

enum class column_order { by_variable, by_segment };

class series_table final : public grid {
public:
  static constexpr std::size_t first_value_column = 2; // after date and time

  // `times`: of the rows, date-time numbers; null: no rows. Also used for the table of differences between scenarios.
  void show(std::shared_ptr<const std::vector<double>> times, std::vector<shown_series> series, bool with_scenarios,
            column_order order);

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override { return times_ ? times_->size() : 0; }
  // Blank if the series has no value at exactly that time.
  cell_value value(std::size_t row, std::size_t column) const override;
  void set_value(std::size_t, std::size_t, const cell_value&) override {}

private:
  std::shared_ptr<const std::vector<double>> times_;
  std::vector<shown_series> series_;
  std::vector<bool> are_single_; // of each series: its values come from single precision
  std::vector<grid_column> columns_;
};

} // namespace vesk
