// A table as a few lines of text, for comparison with expected values.
#pragma once

#include "query/sources/table_source.h"

#include <string>
#include <vector>

namespace vesk {

// "NULL", a number in its shortest form, a date as 2011-01-31, followed by 13:00:00 if it has a time, a time without a
// date as 13:00:00, a text unchanged.
std::string shown(const table_value& value);

// The values of the current row, separated by "; ".
std::string shown_row(row_cursor& row, std::size_t fields);

// The whole table: a line of "NAME:type code", separated by "; ", then a line for each row.
std::vector<std::string> print(table_source& source, std::size_t table = 0);

// The number of rows, the first row, and a line for each field with its type code:
//
//     rows 1827
//     first 2007-10-01; 2.91
//     SAMPLED:9 n=1827 2007-10-01 .. 2012-09-30
//     GAGE_FT:6 n=1813 min=2.9 max=31.6 mean=17.941037
//     SITE:1 n=1827, 2 distinct
std::vector<std::string> summary(table_source& source, std::size_t table);

} // namespace vesk
