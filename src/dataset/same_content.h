// Whether a data set has been edited since it was copied.
#pragma once

#include "dataset/dataset.h"

namespace vesk {

// Whether two data sets are equal, one of them a copy of the other before edits. Unlike ==, not-a-number among the
// settings equals itself; among records it does where both share the list. Any thread.
bool same_content(prevesk_dataset_data_type a, prevesk_dataset_data_type b);

} // namespace vesk
