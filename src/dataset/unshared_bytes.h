// How much memory a copy of a data set costs.
#pragma once

#include "dataset/dataset.h"

#include <cstddef>

namespace vesk {

// The bytes that `a` holds and `b` does not: what dropping `a` would give back if `b` were the only other copy. The
// time grows with the number of records and arrays that the two do not share.
//
// Long series of a data file lie together in one arena, of which small arrays give nothing back before the last one
// goes. So an arena of which `b` has no array counts whole, however little `a` keeps of it.
std::size_t unshared_bytes(const prevesk_dataset_data_type& a, const prevesk_dataset_data_type& b);

} // namespace vesk
