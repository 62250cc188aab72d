// Files that programs append lines to: logs and traces.
#pragma once

#include <filesystem>
#include <string_view>

namespace vesk {

// Appends `text` to `file`, created if missing, and closes it again. Returns 0 or the system's error number. Refuses
// everything but a plain file: a link, with which someone else's folder could direct the text into any file of the user
// (ELOOP, or EMLINK for a second name of a file), a pipe, which would wait for a reader, a device.
int append_to_side_file(const std::filesystem::path& file, std::string_view text);

} // namespace vesk
