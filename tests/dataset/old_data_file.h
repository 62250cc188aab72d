// Data files of any version, byte by byte from the format and with no help from the reader or writer.
#pragma once

#include "dataset/dataset.h"

#include <cstdint>
#include <string>

namespace vesk {

// A small file of the given version with a record of every kind.
std::string old_data_file(std::uint32_t version);

// What reading it must bring, dates and times of the clock aside: `file_version` is the file's, and where the version
// lacks something the default is written.
prevesk_dataset_data_type old_data_set(std::uint32_t version);

} // namespace vesk
