// Whether a data set has been edited since it was copied.
#pragma once

#include "dataset/dataset.h"

namespace vesk {

// Compares a data set with a copy made before edits. Unlike ==, a not-a-number in the settings equals itself; in
// records it does if both share the list. Any thread.
bool same_content(prevesk_dataset_data_type a, prevesk_dataset_data_type b);

// Whether they differ at most in what a validity check sets: the engine's limits and the findings. Any thread.
bool same_input(prevesk_dataset_data_type a, const prevesk_dataset_data_type& b);

} // namespace vesk
