// Moves the boxes of a force-directed layout into grid cells, so that none overlap. Graphviz can do this itself, but
// needs 13 s for 10,000 boxes where this takes a few milliseconds.
#include "network/layout_steps.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace vesk {

namespace {

constexpr double cell_width = box_width + 26, cell_height = box_height + 24;
constexpr double usual_link = 1.7; // average distance between connected boxes, in cells

struct cell {
  long column = 0, row = 0;
  friend auto operator<=>(const cell&, const cell&) = default;
};

// Distance from a cell to a point, in cells.
double distance(const cell& one, schematic_point place) {
  return std::hypot(static_cast<double>(one.column) - place.x, static_cast<double>(one.row) - place.y);
}

class cell_search {
public:
  cell take_nearest(schematic_point place) {
    const cell middle{std::lround(place.x), std::lround(place.y)};
    for (long reach = 0;; ++reach) {
      std::optional<cell> best;
      for (long i = -reach; i <= reach; ++i) // the ring of cells at this distance
        for (const cell& one :
             {cell{middle.column + i, middle.row - reach}, cell{middle.column + i, middle.row + reach},
              cell{middle.column - reach, middle.row + i}, cell{middle.column + reach, middle.row + i}})
          if (!taken_.contains(one) && (!best || distance(one, place) < distance(*best, place))) best = one;
      if (!best) continue;
      taken_.insert(*best);
      return *best;
    }
  }

private:
  std::set<cell> taken_;
};

double middle_link(const schematic& picture) {
  const auto place = [&](segment_number segment) {
    return std::ranges::lower_bound(picture.boxes, segment, {}, &schematic_box::segment)->middle;
  };
  std::vector<double> lengths;
  for (const schematic_line& line : picture.lines) {
    const schematic_point one = place(line.from), two = place(line.to);
    lengths.push_back(std::hypot(one.x - two.x, one.y - two.y));
  }
  if (lengths.empty()) return 0;
  std::ranges::nth_element(lengths, lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2));
  return lengths[lengths.size() / 2];
}

} // namespace

void put_into_cells(schematic& picture) {
  double scale = middle_link(picture);
  scale = scale > 0 ? usual_link / scale : 1;
  // Clamps all boxes to a square about ten times as wide as needed, in case the program's output is extreme.
  double farthest = 0;
  for (const schematic_box& box : picture.boxes)
    farthest = std::max({farthest, std::abs(box.middle.x), std::abs(box.middle.y)});
  const double most = 100 + 10 * static_cast<double>(picture.boxes.size());
  if (farthest * scale > most) scale = most / farthest;
  cell_search cells;
  for (schematic_box& box : picture.boxes) {
    const cell found = cells.take_nearest({box.middle.x * scale, box.middle.y * scale});
    box.middle = {static_cast<double>(found.column) * cell_width, static_cast<double>(found.row) * cell_height};
  }
  for (schematic_line& line : picture.lines) line.curve.clear();
}

} // namespace vesk
