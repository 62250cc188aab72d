// Values and series of a data set by path: "constant.21", "segment.3.volume", "system.4.boundary.7".
//
// A path consists of words and numbers separated by points. Kinds of items (constants, parameters, systems, time
// functions) are numbered by their ISC number, boundaries by their segment, everything else by position from 0, as in
// `vki dump`. A name in braces can replace a number, "constant.{CBOD decay}", regardless of case.
#pragma once

#include "runs/value_table.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vesk {

// An error in a path, a value, or a row of values: one sentence. The middle of a very long one, such as one that quotes
// a field of a megabyte, is left out.
class value_error : public std::runtime_error {
public:
  explicit value_error(const std::string& sentence);
};

// A value or series of a data set; valid for any copy with the same lists.
struct value_ref {
  const value_row* row = nullptr;
  value_positions at{};
  std::string path = {}; // with numbers only
};

// Throws value_error, which suggests the nearest path, number or name.
value_ref find_value(const prevesk_dataset_data_type& data, std::string_view path);

// The end of the path at the start of `text`: the first character outside braces that cannot be in a path.
std::size_t end_of_path(std::string_view text);

// Visits every value and series, in the order of the table.
void for_each_value(const prevesk_dataset_data_type& data, const std::function<void(const value_ref&)>& visit);

// The names of the items along the path, as in "km 60 Oak City, Dissolved oxygen, initial"; the path if there are no
// names.
std::string name_of_value(const prevesk_dataset_data_type& data, const value_ref& ref);

} // namespace vesk
