// Measured series to compare results with, and their file: NAME.measured.json beside the data file NAME.vki. It stores
// the source and meaning of the values; the values stay in their tables.
#pragma once

#include "dataset/stored_query.h"
#include "results/pairing.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

struct measured_series {
  std::string name = {};     // for display
  std::string variable = {}; // as named in the results
  std::string segment = {};  // in the results: its name, or its number from 1
  std::string units = {};    // of the measured values; empty: same as the results
  // Multiplies measured values to convert them to the units of the results. Nothing: not given, so the units must be
  // equal.
  std::optional<double> factor = {};
  pairing_rules rules = {};
  // The first and last date and time to compare, as date-time numbers.
  std::optional<double> from = {}, to = {};
  // Only these members are used: file, table, fields and conditions, and whether values at the same time are averaged.
  import_query_descriptor query = {};
};

// A file that cannot be read or written: one sentence with its name and the location of the error.
class measured_file_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The name of this file for a data file or a results file.
std::filesystem::path measured_file_of(const std::filesystem::path& file);

// Throw measured_file_exception, and file_exception if the file cannot be read or written. Writing replaces an existing
// file only after the new one is complete.
std::vector<measured_series> read_measured_file(const std::filesystem::path& file);
void write_measured_file(const std::filesystem::path& file, const std::vector<measured_series>& series);

// Converts between date-time numbers and the texts in the file: "2011-10-01" or "2011-10-01T06:30:00".
std::optional<double> moment_of_text(std::string_view text);
std::string text_of_moment(double date_time);

// The names of kinds of measured values and of ways of pairing, in the file and on the command line.
std::optional<measured_kind> measured_kind_named(std::string_view name);
std::optional<pairing_way> pairing_way_named(std::string_view name);
inline constexpr const char* measured_kind_names = "\"point\", \"daily mean\" or \"monthly mean\"";
inline constexpr const char* pairing_way_names = "\"interpolate\" or \"nearest\"";

struct measured_values {
  std::vector<measurement> values; // in the units of the table, in order of time
  std::size_t without_value = 0;   // rows without a date, or with a value that is neither a number nor below a limit
};

// Reads the values from the table now. `folder`: searched first for relative file names. Throws query_exception, and
// query_cancelled within a cancellation_scope.
measured_values read_measured_values(const measured_series& series, const std::filesystem::path& folder);

} // namespace vesk
