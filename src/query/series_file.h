// A series in a table that is nothing else: dates in the first column, values in the second.
#pragma once

#include "dataset/moment.h"

#include <string>

namespace vesk {

// The points of a file of any format that stored queries read, in order of time; points of the same date and time are
// averaged. Rows without a date or without a finite value are left out. A relative name is looked for in the current
// folder. Throws query_exception: the file cannot be read, has other than two columns, or gives no point.
point_list points_of_file(const std::string& file);

} // namespace vesk
