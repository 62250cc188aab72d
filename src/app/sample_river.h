// The sample river that comes with the program.
#pragma once

#include <filesystem>

namespace vesk {

// The folder of its data file and tables: <prefix>/share/vesk/examples/roanoke, or in a build the one that ./run has
// made. Empty: there is none.
std::filesystem::path sample_folder();

// Copies the sample from `from` into the folder "Vesk sample river" of `documents`, where it can be run and changed,
// and returns the data file. A copy that is there already stays as it is. Throws file_exception.
std::filesystem::path copy_sample(const std::filesystem::path& from, const std::filesystem::path& documents);

} // namespace vesk
