// Date, Time and Value of one series of the data set.
#pragma once

#include "charts/grid.h"
#include "dataset/series.h"
#include "editors/editor_host.h"

#include <optional>
#include <string>

namespace vesk {

class series_grid final : public grid {
public:
  // `format`: the setting with the picture of the values.
  series_grid(editor_host& host, std::string format);

  // The series to show; nothing: none. A reference to a missing series also shows nothing.
  void set_series(std::optional<series_ref> ref) { ref_ = ref; }
  const std::optional<series_ref>& ref() const { return ref_; }
  const stored_series* series() const;
  void take_format();

  bool is_deferred() const;
  // The status line under the grid: number of points, period, minimum, mean, maximum, points outside the run; for a
  // block of values their number, sum and mean.
  std::string summary(std::optional<cell_range> selection) const;

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override;
  cell_value value(std::size_t row, std::size_t column) const override;
  void set_value(std::size_t row, std::size_t column, const cell_value& value) override;
  cell_mark mark(std::size_t row, std::size_t column) const override;
  std::string tool_tip(std::size_t row, std::size_t column) const override;
  bool has_free_rows() const override { return series() != nullptr; }
  void insert_row(std::size_t row) override;
  void erase_rows(std::size_t first, std::size_t count) override;
  void resize(std::size_t count) override;
  std::size_t sort(std::size_t row) override;

  enum : std::size_t { date_column, time_column, value_column };

private:
  point_list& edit_points();

  editor_host& host_;
  std::string format_;
  std::optional<series_ref> ref_;
  std::vector<grid_column> columns_;
};

// "2 Oct 2011"
std::string day_text(const moment_type& moment);

} // namespace vesk
