// Values and series of a data set by path: "constant.21", "segment.3.volume", "system.4.boundary.7".
//
// A path is words and numbers between points. Kinds of items (constants, parameters, systems, time functions) are
// numbered by their ISC number, boundaries by their segment, all else by position from 0, as `vki dump` prints them. In
// the place of a number there may be a name in braces, "constant.{CBOD decay}", regardless of case.
#pragma once

#include "runs/value_table.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vesk {

// What is wrong with a path, a value, or a row of values: one sentence.
class value_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A value or series of a data set, and of any copy with the same lists.
struct value_ref {
  const value_row* row = nullptr;
  value_positions at{};
  std::string path = {}; // with numbers only
};

// Throws value_error, which names the nearest path, number or name.
value_ref find_value(const prevesk_dataset_data_type& data, std::string_view path);

// Where the path at the start of `text` ends: at the first character outside braces that no path has.
std::size_t end_of_path(std::string_view text);

// Visits every value and series, in the order of the table.
void for_each_value(const prevesk_dataset_data_type& data, const std::function<void(const value_ref&)>& visit);

// The names of the items on the way, as in "km 60 Oak City, Dissolved oxygen, initial"; without names the path.
std::string name_of_value(const prevesk_dataset_data_type& data, const value_ref& ref);

} // namespace vesk
