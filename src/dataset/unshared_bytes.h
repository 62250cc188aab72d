// How much memory a copy of a data set costs.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>

namespace vesk {

// The bytes that belong to `a` but not to `b`: the memory freed by dropping `a` if `b` were the only other copy. The
// time grows with the number of records and arrays that are not shared.
//
// The long series of a data file are in one arena, whose small arrays free nothing until the last one is gone. So an
// arena in which `b` has no array counts in full, however little of it `a` uses.
std::size_t unshared_bytes(const prevesk_dataset_data_type& a, const prevesk_dataset_data_type& b);

} // namespace vesk
