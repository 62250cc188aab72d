// Looks up file names stored in a data set: written on any platform, possibly relative.
#pragma once

#include <filesystem>
#include <string_view>

namespace vesk {

// The file meant by `name`. Backslashes also count as separators; a relative name is looked for in `folder` (the data
// file's) and then in the current one. Empty if there is no such regular file.
std::filesystem::path find_file(std::string_view name, const std::filesystem::path& folder = {});

} // namespace vesk
