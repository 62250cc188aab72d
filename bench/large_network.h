// Data sets with many segments or many functions, for benchmarks of the editors.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>

namespace vesk::bench {

// Named segments with 30 parameters and 20 systems.
prevesk_dataset_data_type make_large_network(std::size_t segments);

// This number of functions in the first flow field, each with two points and two pairs.
void add_flow_functions(prevesk_dataset_data_type& data, std::size_t functions);

} // namespace vesk::bench
