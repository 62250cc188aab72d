// The data dictionary: the keyword table as a text file.
#pragma once

#include "platform/file_io.h"

#include <filesystem>

namespace vesk {

// Writes the keyword table to `file`. False if the file cannot be opened. Throws file_exception if it cannot be
// written; an old file is then unchanged.
bool write_dictionary_file(const std::filesystem::path& file);

} // namespace vesk
