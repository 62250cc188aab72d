// File names as stored in a data set: written on any platform, possibly relative.
#pragma once

#include <filesystem>
#include <string_view>

namespace vesk {

// The file that `name` means: backslashes part folders too; a relative name is looked for in `folder` (the data file's
// own) and then in the current one. Empty when there is no such regular file.
std::filesystem::path find_file(std::string_view name, const std::filesystem::path& folder = {});

} // namespace vesk
