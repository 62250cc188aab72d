// The command line of vesk-results.
#pragma once

#include "results/measured_series.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vesk {

enum class results_command { list, series, profile, agreement, collect };
enum class output_format { csv, json };

struct results_options {
  results_command command = results_command::list;
  std::string file;                 // of results
  std::vector<std::string> folders; // of collect
  output_format format = output_format::csv;
  std::vector<std::string> variables, segments;
  std::optional<double> time, from, to; // date-time numbers
  // Of agreement.
  std::string measured_file; // empty: beside the results
  std::string estimates;     // a table; empty: none
  bool keeps_series = false; // adds the series of the command line to the measured file
  measured_series series;    // of the command line, where its query has a file
};

// One sentence.
class results_usage_error : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// `words`: without the program's name, and neither --help nor --version. Throws results_usage_error.
results_options parse_results_options(const std::vector<std::string>& words);

extern const char* const results_usage;

} // namespace vesk
