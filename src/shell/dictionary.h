// The data dictionary: the keyword table as a text file.
#pragma once

#include <filesystem>

namespace vesk {

// Writes the table of a shell of its own to `file`. False when the file cannot be opened; nothing is said about it.
bool write_dictionary_file(const std::filesystem::path& file);

} // namespace vesk
