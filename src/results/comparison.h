// Compares results with measured series.
#pragma once

#include "results/measured_series.h"
#include "results/results_file.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vesk {

// Another estimate of the measured quantity, scored beside the model: a saturation value, a regression, another model.
struct estimate_series {
  std::string name;
  modelled_series values;
};

// Reads the numeric columns of a table; `file` is looked for in `folder` first. The first column of dates and times
// gives the times. Throws query_exception.
std::vector<estimate_series> read_estimates(const std::string& file, const std::filesystem::path& folder);

struct estimate_scores {
  std::string name;
  std::vector<period_scores> periods; // by month, then the whole period
};

struct comparison {
  measured_series series;
  std::size_t variable = 0, segment = 0; // positions in the results
  std::size_t measured = 0;              // values within the compared period
  std::size_t without_value = 0;         // rows of the table, as in measured_values
  pairing paired = {};
  std::vector<estimate_scores> estimates = {}; // the model, then the others, then the mean of each month as measured
};

inline constexpr const char* model_estimate = "model";
inline constexpr const char* monthly_estimate = "the mean of each month as measured";

// Why a comparison failed: one sentence.
class comparison_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// `folder`: searched first for relative names of tables. All estimates are scored on the measurements for which the
// model has a value. Throws comparison_exception if units differ without a factor or nothing can be compared;
// results_exception; query_exception.
comparison compare(const results_file& results, const measured_series& series,
                   const std::vector<estimate_series>& others, const std::filesystem::path& folder);

} // namespace vesk
