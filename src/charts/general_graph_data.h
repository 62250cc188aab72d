// A series as passed to a chart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vesk {

inline constexpr double days_to_1970 = 25569; // 1 January 1970 as a date-time number

// How to draw a series, if not left to the chart. Both numbers count from 0, without a limit.
struct line_look {
  std::size_t colour = 0;
  std::size_t pattern = 0; // of the line: 0 is solid
  bool dots = false;       // no line
  bool hidden = false;
};

struct general_graph_data {
  explicit general_graph_data(std::int32_t points)
      : count(points), x(static_cast<std::size_t>(points)), y(static_cast<std::size_t>(points)) {}

  std::int32_t count;
  std::vector<double> x; // days since 1 January 1970 at 00:00, or plain numbers
  std::vector<double> y;
  std::int32_t not_a_date_axis = 0; // 1 if `x` holds plain numbers
  std::string label;                // in the legend
  bool steps = false;               // each value holds until the next point
  std::optional<line_look> look;    // empty: depends on the position in the chart
  std::vector<std::size_t> rows;    // row of each point; empty: points are in the order of the rows

  bool is_hidden() const { return look && look->hidden; }
  std::size_t row_of(std::size_t point) const { return rows.empty() ? point : rows[point]; }
};

} // namespace vesk
