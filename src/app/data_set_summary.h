// What the main window says of the open data set, in a few rows. No number of it is changed here.
#pragma once

#include "app/results_state.h"
#include "dataset/dataset.h"

#include <string>
#include <vector>

namespace vesk {

struct summary_row {
  std::string caption, text;
  friend bool operator==(const summary_row&, const summary_row&) = default;
};

// Model, period, network, systems, series, solution. Takes about 1 ms for each 10,000 series.
std::vector<summary_row> summary_of(const prevesk_dataset_data_type& data);

// Queries and results, which need the record of the last run. `state`: of this data set; null while it is not known.
std::vector<summary_row> summary_of_runs(const prevesk_dataset_data_type& data, const results_state* state);

} // namespace vesk
