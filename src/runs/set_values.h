// Values set for one run: "constant.21=0.2", "flow.0.0*=1.1", "system.4.boundary.7=inflow.csv".
//
// A number takes "=", "*=" and "+="; a date "=" with an ISO text ("2011-10-01" or "2011-10-01T06:30"); a series "*="
// and "+=" for all of its points, and "=" with a file.
#pragma once

#include "runs/value_path.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

enum class assignment_operator { set, multiply, add };

std::string_view text_of(assignment_operator how); // "=", "*=" or "+="

struct value_assignment {
  value_ref ref;
  assignment_operator how = assignment_operator::set;
  std::string text;  // after the operator
  double number = 0; // parsed from the text; a date as a date-time number; 0 for a file

  bool names_a_file() const { return ref.row->kind == path_kind::series && how == assignment_operator::set; }
};

// "PATH=VALUE", "PATH*=VALUE" or "PATH+=VALUE". Throws value_error.
value_assignment parse_assignment(const prevesk_dataset_data_type& data, std::string_view text);

// A path, optionally followed by an operator ("=" by default), and its value, as in a table. Throws value_error.
value_assignment parse_assignment(const prevesk_dataset_data_type& data, std::string_view path_and_operator,
                                  std::string_view value);

// Throws value_error if two assignments have the same path.
void refuse_repeated(std::span<const value_assignment> assignments);

struct assignment_rules {
  bool beyond_limits = false;                                     // allows values outside the catalogue's range
  std::function<point_list(const std::string& file)> read_series; // the points of a file; may throw
};

// Sets the value; a series that is set is no longer filled by its query. Throws value_error and leaves the data set
// unchanged if the result is not finite, is outside the catalogue's range, or would have no effect on a run.
void apply(prevesk_dataset_data_type& data, const value_assignment& assignment, const assignment_rules& rules);

} // namespace vesk
