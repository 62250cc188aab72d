// The rows found by a query, read-only.
#pragma once

#include "charts/grid.h"
#include "query/shown_rows.h"

#include <string>
#include <vector>

namespace vesk {

class shown_rows_grid final : public grid {
public:
  shown_rows_grid() { show({}); }

  // Rows without fields make an empty grid.
  void show(shown_rows rows) {
    rows_ = std::move(rows);
    columns_.clear();
    for (const std::string& field : rows_.fields) columns_.push_back({field, text_cell(), false});
    if (columns_.empty()) columns_.push_back({"", text_cell(), false});
  }
  const shown_rows& rows() const { return rows_; }

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override { return rows_.row_count(); }
  cell_value value(std::size_t row, std::size_t column) const override {
    return row < row_count() ? cell_value(rows_.cells[row * columns_.size() + column]) : cell_value();
  }
  void set_value(std::size_t, std::size_t, const cell_value&) override {}

private:
  shown_rows rows_;
  std::vector<grid_column> columns_;
};

} // namespace vesk
