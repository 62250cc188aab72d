// Checks whether a data file is intact.
#pragma once

#include "dataset/binary_reader.h"

namespace vesk {

// Throws data_file_exception at the first fault: everything that reading refuses, a header offset that is not that of
// the last section, bytes after the end, and a newer version.
void check_data_file(binary_reader& file);

// Throws data_file_exception if the file, whose `version` has been read, is newer than this program.
void refuse_newer_version(binary_reader& file, std::uint32_t version);

} // namespace vesk
