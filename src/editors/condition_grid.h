// The conditions of a query as a grid: conjunction, field, comparison and value.
#pragma once

#include "charts/grid.h"
#include "query/import_query.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vesk {

class condition_grid final : public grid {
public:
  // `query` must outlive the grid. `active_row`: the row whose fields and values the lists show.
  condition_grid(import_query& query, std::function<std::size_t()> active_row);

  // The row's values must be read: its field has changed, or its value was typed.
  std::function<void(std::size_t row)> OnValuesWanted;

  std::span<const grid_column> columns() const override { return columns_; }
  std::size_t row_count() const override { return query_.stored.conditions.size(); }
  cell_value value(std::size_t row, std::size_t column) const override;
  void set_value(std::size_t row, std::size_t column, const cell_value& value) override;
  std::string tool_tip(std::size_t row, std::size_t column) const override;

  enum : std::size_t { conjunction_column, field_column, comparison_column, value_column };

private:
  class row_items;

  const std::vector<std::string>& values_of_active_row() const;

  import_query& query_;
  std::function<std::size_t()> active_row_;
  std::shared_ptr<row_items> fields_, values_;
  std::vector<grid_column> columns_;
};

} // namespace vesk
