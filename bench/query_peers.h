// Other programs and libraries that answer the query benchmark's question from the same files.
#pragma once

#include <filesystem>
#include <vector>

namespace vesk::bench {

struct mean_value {
  double moment; // days since 30 December 1899
  double value;
};
using mean_values = std::vector<mean_value>; // in order of time

// The SQLite library on a database, with one SELECT that filters, averages and sorts.
mean_values by_sqlite_library(const std::filesystem::path& database);

// The SQLite shell: .import of separated text, then the same SELECT.
mean_values by_sqlite_shell(const std::filesystem::path& csv);

// GDAL's ogr2ogr with its SQLite dialect on separated text or a dBASE table.
mean_values by_gdal(const std::filesystem::path& table);

// A scan with pxlib over a Paradox table: raw records, decoding only the fields needed, then sorted and averaged here.
mean_values by_pxlib(const std::filesystem::path& table);

} // namespace vesk::bench
