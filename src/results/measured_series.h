// Measured series that results are compared with, and the file that keeps them: NAME.measured.json beside the data file
// NAME.vki. It keeps where the values come from and what they mean; the values themselves stay in their tables.
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
  std::string name = {};     // for people
  std::string variable = {}; // of the results
  std::string segment = {};  // of the results: its name, or its number from 1
  std::string units = {};    // of the measured values; empty: those of the results
  // Measured values times this are in the units of the results. Nothing: not given, so the units must be the same.
  std::optional<double> factor = {};
  pairing_rules rules = {};
  // The first and last moment that is compared, as date-time numbers.
  std::optional<double> from = {}, to = {};
  // Of its members that a data set's series has, these count: file, table, fields and conditions, and whether values of
  // the same moment are averaged.
  import_query_descriptor query = {};
};

// A file that cannot be read or written: one sentence that names it, and where in it the fault is.
class measured_file_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The file's name for a data file or for a file of results.
std::filesystem::path measured_file_of(const std::filesystem::path& file);

// Throws measured_file_exception, and file_exception where the file cannot be read or written. A file that exists is
// replaced only when the new one is whole.
std::vector<measured_series> read_measured_file(const std::filesystem::path& file);
void write_measured_file(const std::filesystem::path& file, const std::vector<measured_series>& series);

// Text and moment as the file has them: "2011-10-01" or "2011-10-01T06:30:00".
std::optional<double> moment_of_text(std::string_view text);
std::string text_of_moment(double date_time);

// The words for kinds of measured values and ways of pairing, in the file and on the command line.
std::optional<measured_kind> measured_kind_named(std::string_view name);
std::optional<pairing_way> pairing_way_named(std::string_view name);
inline constexpr const char* measured_kind_names = "\"point\", \"daily mean\" or \"monthly mean\"";
inline constexpr const char* pairing_way_names = "\"interpolate\" or \"nearest\"";

struct measured_values {
  std::vector<measurement> values; // in the units of the table, in order of time
  std::size_t without_value = 0;   // rows without a date, or with a value that is neither a number nor below a limit
};

// The values from the table, at present. `folder`: where relative file names are looked for first. Throws
// query_exception, and query_cancelled within a cancellation_scope.
measured_values read_measured_values(const measured_series& series, const std::filesystem::path& folder);

} // namespace vesk
