// Finds the start of the table in a sheet or a text file with titles above it, and the names of its columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// One of the first rows of a sheet or text file.
struct sample_row {
  std::vector<std::string> texts; // its cells as text, empty for empty cells
  std::size_t values = 0;         // how many of them are numbers, dates or times
};

// The first rows of a table: enough to find its header, and limited in memory.
class header_sample {
public:
  bool is_full() const { return rows_.size() == most_rows || cells_ >= most_cells; }
  void begin_row() { rows_.emplace_back(); }

  // Adds a cell to the row, after its other cells; the text is truncated after `longest_text` bytes. `column`: from 0.
  void add(std::size_t column, std::string_view text, bool is_value);

  const std::vector<sample_row>& rows() const { return rows_; }

private:
  static constexpr std::size_t most_rows = 200, most_cells = 1 << 18, longest_text = 1000;

  std::vector<sample_row> rows_;
  std::size_t cells_ = 0; // including empty ones
};

struct header {
  std::size_t row = 0;            // of the sample: the header's first, or the first of the values if there is no header
  std::size_t rows = 0;           // of the header: 0, 1, or more if rows of units or of a second line follow
  std::vector<std::string> names; // of all columns; may be empty
};

// Finds the header in the first rows of a table: the first row that fills more than half of the columns usually filled.
// A row that has only values is not a header. Rows directly below it that have only texts, some of them in columns of
// numbers or dates, belong to it; the first of them provides missing names.
header find_header(const std::vector<sample_row>& sample);

} // namespace vesk
