// All that is suspicious in a data set, as lines of text with the place. The editors mark the same cells.
#pragma once

#include "dataset/dataset.h"

#include <string>
#include <vector>

namespace vesk {

// One line for each series, pair list or column of values: "Oxygen, row 3: ... 5 rows in all." Of what no run uses,
// only that it is not used.
std::vector<std::string> list_findings(const prevesk_dataset_data_type& data);

} // namespace vesk
