// The results grid: a view of the engine's array while a job runs. Nothing is copied; visible cells are read when they
// are painted.
#pragma once

#include "ui/grid_view.h"
#include "viewer/live_samples.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vesk {

// The array's elements as a read-only grid.
class result_cells final : public grid {
public:
  // The element at a row and column, both from 0; nothing: an empty cell.
  using reader = std::function<std::optional<double>(int row, int column)>;

  explicit result_cells(reader read) : read_(std::move(read)) {}

  void initialize_grid(const std::vector<std::string>& column_labels, std::size_t rows);
  void set_picture(const std::string& picture); // see numeric_picture.h

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override { return rows_; }
  cell_value value(std::size_t row, std::size_t column) const override;
  void set_value(std::size_t, std::size_t, const cell_value&) override {}

private:
  const reader read_;
  std::vector<grid_column> columns_;
  std::size_t rows_ = 0;
  std::string picture_;
};

// A base class, so that it exists before the view below is made.
struct result_content {
  explicit result_content(result_cells::reader read) : results(std::move(read)), result_table(results) {}

  result_cells results;
  TFillCalcTable result_table;
};

class results_table final : private result_content, public grid_view {
public:
  results_table(QWidget* parent, result_cells::reader read);

  void initialize_grid(const std::vector<std::string>& column_labels, int rows);
  void set_picture(const std::string& picture) { results.set_picture(picture); }
  void repaint_cells();
  std::vector<live_cell> chosen_cells(); // the selected ones, at most live_samples::most_cells
};

} // namespace vesk
