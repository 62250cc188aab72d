// Data files of any version, written byte by byte from the format, without the reader or writer.
#pragma once

#include "dataset/dataset.h"

#include <cstdint>
#include <string>

namespace vesk {

// A small file of the given version with a record of every kind.
std::string old_data_file(std::uint32_t version);

// The result of reading it, except for dates and times from the clock. `file_version` is the file's; fields that the
// version lacks have their defaults.
prevesk_dataset_data_type old_data_set(std::uint32_t version);

} // namespace vesk
