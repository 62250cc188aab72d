// What a grid shows and changes, by row and column. Independent of widgets and of the underlying records.
//
// Rows and columns count from 0; the row header with the row's number is not a column. A grid looks up its records in
// each call and keeps no pointer to them.
#pragma once

#include "charts/cell.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

struct grid_column {
  std::string header; // lines separated by '\n'
  cell_type type;
  bool editable = true;
  // Typed entries write the cell, but pastes and fills skip it.
  bool typed_only = false;
};

// A warning about a cell. Never a reason to refuse its value.
struct cell_mark {
  std::string text; // one sentence; empty: no mark
  explicit operator bool() const { return !text.empty(); }
};

// The rows of a grid as they will be after the paste being read.
class coming_rows {
public:
  virtual std::size_t row_count() const = 0;
  // The text pasted into a cell; nothing if the paste leaves the cell alone. Valid while the paste is read. Not for
  // columns after a date and its time, which may share a field.
  virtual std::optional<std::string_view> field(std::size_t row, std::size_t column) const = 0;

protected:
  ~coming_rows() = default;
};

class grid {
public:
  virtual ~grid() = default;

  virtual std::span<const grid_column> columns() const = 0;
  virtual std::size_t row_count() const = 0;
  virtual cell_value value(std::size_t row, std::size_t column) const = 0; // blank if there is no such record
  // `value` was accepted by the column's cell type.
  virtual void set_value(std::size_t row, std::size_t column, const cell_value& value) = 0;

  virtual cell_mark mark(std::size_t, std::size_t) const { return {}; }
  virtual std::string tool_tip(std::size_t, std::size_t) const { return {}; }
  virtual std::optional<cell_value> default_value(std::size_t, std::size_t) const { return std::nullopt; }

  // Grids with fixed rows do not override these.
  virtual bool has_free_rows() const { return false; }
  virtual void insert_row(std::size_t) {}              // a default row before this one
  virtual void erase_rows(std::size_t, std::size_t) {} // first, count
  virtual void resize(std::size_t) {}                  // appends default rows, or erases the last ones

  // Called before the fields of a paste are read, and with null afterwards. A grid whose cells refer to its own rows
  // then reads and shows them by the number and names that the rows will have.
  virtual void expect(const coming_rows*) {}

  // Sorts the rows after an edit; returns the new position of `row`.
  virtual std::size_t sort(std::size_t row) { return row; }
};

// A rectangle of cells, both ends included.
struct cell_range {
  std::size_t top = 0, left = 0, bottom = 0, right = 0;

  std::size_t rows() const { return bottom - top + 1; }
  std::size_t columns() const { return right - left + 1; }
  bool contains(std::size_t row, std::size_t column) const {
    return row >= top && row <= bottom && column >= left && column <= right;
  }
  friend bool operator==(const cell_range&, const cell_range&) = default;
};

} // namespace vesk
