// Results held against measured series, with everything that is shown of it.
#pragma once

#include "results/measured_series.h"
#include "results/results_file.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vesk {

// Another estimate of what was measured, scored beside the model: a saturation value, a regression, another model.
struct estimate_series {
  std::string name;
  modelled_series values;
};

// The columns of numbers of a table; `file` is looked for in `folder` first. The first column of dates and times has
// the times. Throws query_exception.
std::vector<estimate_series> read_estimates(const std::string& file, const std::filesystem::path& folder);

struct estimate_scores {
  std::string name;
  std::vector<period_scores> periods; // by month, the whole at last
};

struct comparison {
  measured_series series;
  std::size_t variable = 0, segment = 0; // of the results
  std::size_t measured = 0;              // values within the period that is compared
  std::size_t without_value = 0;         // rows of the table, as in measured_values
  pairing paired = {};
  std::vector<estimate_scores> estimates = {}; // the model, then the others, then the mean of each month as measured
};

inline constexpr const char* model_estimate = "model";
inline constexpr const char* monthly_estimate = "the mean of each month as measured";

// Cannot be compared: one sentence.
class comparison_exception : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// `folder`: where relative names of tables are looked for first. All estimates are scored on the measurements that the
// model has a value for. Throws comparison_exception where units differ and no factor is given or where nothing can be
// compared; results_exception; query_exception.
comparison compare(const results_file& results, const measured_series& series,
                   const std::vector<estimate_series>& others, const std::filesystem::path& folder);

} // namespace vesk
