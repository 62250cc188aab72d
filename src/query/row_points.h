// The points of a series, made of the rows that a query selects.
#pragma once

#include "dataset/records.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vesk {

class result_set;

// What executing a query came to.
struct query_report {
  std::uint64_t rows = 0;           // of the source, that the conditions let pass
  std::uint64_t without_moment = 0; // of them, left out because they have no date
  std::uint64_t without_value = 0;  // of them, left out because they have no number that is finite
  std::uint64_t points = 0;         // made of the others
  fill_time as_of = {};             // the points contain every change of the source up to this time
};

// Most tables are in order of time, so rows become points as they come. A few rows that are not are sorted here; more
// of them have to be read once more, in order.
class row_points {
public:
  // `average`: one point for all rows with the same date and time; `in_order`: the rows come in order of time.
  row_points(bool average, bool in_order) : average_(average), in_order_(in_order) {}

  // Takes all rows, whose first field is the date and time and whose second one the value. False when too many are out
  // of order; this is of no use then. Throws query_exception, also when the values are all texts.
  bool take(result_set& rows);

  const query_report& report() const { return report_; }
  point_list points() && { return std::move(points_); }

private:
  struct row {
    double moment, value; // moment: days since 30 December 1899
  };
  static bool is_earlier(const row& a, const row& b) { return a.moment < b.moment; }

  bool add(const row& next);
  void make_points_of_kept();
  void make_point(const row& next);
  void end_point();

  bool average_, in_order_;
  query_report report_;
  point_list points_;
  std::vector<row> kept_;           // the first rows, if they may be out of order
  std::optional<double> last_ = {}; // the date and time of the last row, once rows are not kept any more
  // The rows of one date and time.
  double moment_ = 0, sum_ = 0;
  std::uint64_t count_ = 0;
};

} // namespace vesk
