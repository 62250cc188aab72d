// Folding: a river is a line, and a line of a hundred boxes is too small to read in any window.
#include "network/layout_steps.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr double good_shape = 1.9; // width by height of a window
constexpr double row_gap = 34, turn = 46;

// The columns of boxes, from left to right, and where to cut between them.
class folding {
public:
  explicit folding(schematic& picture) : picture_(picture) {}

  void run() {
    find_columns();
    const std::size_t rows = wanted_rows();
    if (rows < 2) return;
    choose_cuts(rows);
    move();
  }

private:
  void find_columns() {
    double top = 1e300, bottom = -1e300;
    for (const schematic_box& box : picture_.boxes) {
      columns_.push_back(box.middle.x);
      top = std::min(top, box.middle.y - box_height / 2);
      bottom = std::max(bottom, box.middle.y + box_height / 2);
    }
    for (const schematic_line& line : picture_.lines)
      for (const schematic_point& point : line.curve) top = std::min(top, point.y), bottom = std::max(bottom, point.y);
    top_ = top;
    height_ = bottom - top;
    std::ranges::sort(columns_);
    const auto same = [](double a, double b) { return b - a < box_width / 2; };
    columns_.erase(std::ranges::unique(columns_, same).begin(), columns_.end());
  }

  // The number that brings the picture closest to a window's shape.
  std::size_t wanted_rows() const {
    const double width = columns_.back() - columns_.front() + box_width;
    const double rows = std::sqrt(width / (good_shape * (height_ + row_gap)));
    return std::min(static_cast<std::size_t>(std::max(1.0, std::round(rows))), columns_.size() / 2);
  }

  // Near an even split, at the cut crossed by the fewest lines.
  void choose_cuts(std::size_t rows) {
    std::vector<std::size_t> passing(columns_.size() + 1, 0); // lines between column i - 1 and i
    for (const schematic_line& line : picture_.lines) {
      const std::size_t one = column_of(line.from), two = column_of(line.to);
      for (std::size_t i = std::min(one, two) + 1; i <= std::max(one, two); ++i) ++passing[i];
    }
    const std::size_t share = columns_.size() / rows, reach = share / 4;
    for (std::size_t row = 1; row < rows; ++row) {
      const std::size_t even = columns_.size() * row / rows;
      std::size_t best = even;
      for (std::size_t i = even - reach; i <= even + reach && i < columns_.size(); ++i)
        if (passing[i] < passing[best]) best = i;
      first_columns_.push_back(best);
    }
  }

  std::size_t column_at(double x) const {
    const auto after = std::ranges::upper_bound(columns_, x + box_width / 4);
    return after == columns_.begin() ? 0 : static_cast<std::size_t>(after - columns_.begin()) - 1;
  }
  std::size_t column_of(segment_number segment) const { return column_at(box_of(segment).middle.x); }
  const schematic_box& box_of(segment_number segment) const {
    return *std::ranges::lower_bound(picture_.boxes, segment, {}, &schematic_box::segment);
  }
  std::size_t row_of(std::size_t column) const {
    return static_cast<std::size_t>(std::ranges::upper_bound(first_columns_, column) - first_columns_.begin());
  }

  void move() {
    std::vector<double> begin{columns_.front()}, widths;
    for (const std::size_t first : first_columns_) begin.push_back(columns_[first]);
    for (std::size_t row = 0; row < begin.size(); ++row) {
      const std::size_t end = row < first_columns_.size() ? first_columns_[row] : columns_.size();
      widths.push_back(columns_[end - 1] - begin[row]);
    }
    const double widest = *std::ranges::max_element(widths);
    const auto moved = [&](schematic_point point, std::size_t row) {
      const double along = point.x - begin[row];
      return schematic_point{row % 2 == 0 ? along : widest - along,
                             point.y - top_ + static_cast<double>(row) * (height_ + row_gap)};
    };
    // Lines within a row keep their curves; the others wrap around the row's end.
    std::vector<std::size_t> rows; // of each line's ends
    for (const schematic_line& line : picture_.lines) {
      rows.push_back(row_of(column_of(line.from)));
      rows.push_back(row_of(column_of(line.to)));
    }
    std::vector<std::size_t> row_of_box;
    for (const schematic_box& box : picture_.boxes) row_of_box.push_back(row_of(column_at(box.middle.x)));
    for (std::size_t i = 0; i < picture_.boxes.size(); ++i)
      picture_.boxes[i].middle = moved(picture_.boxes[i].middle, row_of_box[i]);
    for (std::size_t i = 0; i < picture_.lines.size(); ++i) {
      schematic_line& line = picture_.lines[i];
      if (rows[2 * i] == rows[2 * i + 1])
        for (schematic_point& point : line.curve) point = moved(point, rows[2 * i]);
      else
        turn_around(line, std::min(rows[2 * i], rows[2 * i + 1]));
    }
  }

  void turn_around(schematic_line& line, std::size_t upper_row) const {
    const double side = upper_row % 2 == 0 ? 1 : -1;
    const auto end = [&](segment_number segment) {
      const schematic_point middle = box_of(segment).middle;
      return schematic_point{middle.x + side * box_width / 2, middle.y};
    };
    const schematic_point from = end(line.from), to = end(line.to);
    const double out = (side > 0 ? std::max(from.x, to.x) : std::min(from.x, to.x)) + side * turn;
    line.curve = {from, {out, from.y}, {out, to.y}, to};
  }

  schematic& picture_;
  std::vector<double> columns_;            // centres, before the move
  std::vector<std::size_t> first_columns_; // of the rows after the first
  double top_ = 0, height_ = 0;
};

} // namespace

void fold(schematic& picture) {
  if (picture.boxes.size() > 1) folding(picture).run();
}

} // namespace vesk
