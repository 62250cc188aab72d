// Files that programs add lines to beside their work: logs and traces.
#pragma once

#include <filesystem>
#include <string_view>

namespace vesk {

// Appends `text` to `file`, which is made when it is missing, and closes it again. Returns 0 or the system's error
// number. Anything but a plain file is refused: a link, by which a folder from elsewhere could direct the text into any
// file of the user (ELOOP, or EMLINK for a second name of a file), a pipe that would wait for a reader, a device.
int append_to_side_file(const std::filesystem::path& file, std::string_view text);

} // namespace vesk
