// What vesk-results prints: comma-separated rows or JSON.
#pragma once

#include "results/comparison.h"
#include "results/results_file.h"
#include "tools/results_options.h"

#include <string>
#include <vector>

namespace vesk {

// A text as a field of a table: RFC 4180, and an apostrophe before what a spreadsheet would take for a formula.
std::string table_field(const std::string& text);

std::string listing(const results_file& results, output_format format);

struct chosen_values {
  std::vector<std::size_t> variables, segments; // positions; all segments for a profile
  position_range times;
};

// Over time, and over segments at the first of the times. Throw results_exception.
std::string series_text(const results_file& results, const chosen_values& chosen, output_format format);
std::string profile_text(const results_file& results, const chosen_values& chosen, output_format format);

std::string agreement_text(const results_file& results, const std::vector<comparison>& comparisons,
                           output_format format);

} // namespace vesk
