// A small in-memory grid for tests of tables: Date, Time, Value, Name, Kind, On.
#pragma once

#include "charts/fill_calc_table.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace vesk {

class memory_grid final : public grid {
public:
  explicit memory_grid(bool free_rows = true) : free_rows_(free_rows) {
    column_list = {{"Date", {cell_kind::date}},
                   {"Time", {cell_kind::time}},
                   {"Value", number_cell("####.##")},
                   {"Name", text_cell()},
                   {"Kind", combo_cell({"Linear", "Step"})},
                   {"Balance", check_cell(), true, true},
                   {"Limit", number_cell("E"), false}};
  }

  std::vector<std::vector<cell_value>> rows;
  std::string marked; // rows with this name are marked
  int writes = 0;
  std::vector<grid_column> column_list;

  void add(double day, double second, double value, const std::string& name) {
    rows.push_back({day, second, value, name, 0.0, 0.0, 7.0});
  }

  std::span<const grid_column> columns() const override { return column_list; }
  std::size_t row_count() const override { return rows.size(); }
  cell_value value(std::size_t row, std::size_t column) const override {
    return row < rows.size() ? rows[row][column] : cell_value{};
  }
  void set_value(std::size_t row, std::size_t column, const cell_value& value) override {
    rows[row][column] = value;
    ++writes;
  }
  cell_mark mark(std::size_t row, std::size_t) const override {
    return {!marked.empty() && rows[row][3] == cell_value(marked) ? "Worth a look." : ""};
  }
  bool has_free_rows() const override { return free_rows_; }
  void insert_row(std::size_t row) override { rows.insert(at(row), fresh()); }
  void erase_rows(std::size_t first, std::size_t count) override { rows.erase(at(first), at(first + count)); }
  void resize(std::size_t count) override { rows.resize(count, fresh()); }
  std::size_t sort(std::size_t row) override {
    const auto active = rows[row];
    std::ranges::stable_sort(rows, [](const auto& a, const auto& b) { return a[0] < b[0]; });
    return static_cast<std::size_t>(std::ranges::find(rows, active) - rows.begin());
  }

private:
  static std::vector<cell_value> fresh() { return {1.0, 0.0, 0.0, std::string("new"), 0.0, 0.0, 7.0}; }
  std::vector<std::vector<cell_value>>::iterator at(std::size_t row) {
    return rows.begin() + static_cast<std::ptrdiff_t>(row);
  }

  bool free_rows_;
};

} // namespace vesk
