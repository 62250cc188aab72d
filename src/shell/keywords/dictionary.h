// The data dictionary: the keyword table as a text file.
#pragma once

#include "platform/file_io.h"

#include <filesystem>

namespace vesk {

// Writes the table of a separate shell to `file`. False when the file cannot be opened. Throws file_exception when it
// cannot be written; an old file is then as it was.
bool write_dictionary_file(const std::filesystem::path& file);

} // namespace vesk
