// Where the program stands and where it may write.
#pragma once

#include <filesystem>

namespace vesk {

std::filesystem::path program_directory(); // the folder of the executable
std::filesystem::path install_prefix();    // the folder above it: <prefix> of <prefix>/bin

// $XDG_STATE_HOME/vesk, or ~/.local/state/vesk. Not created here.
std::filesystem::path state_directory();

// The user's folders for the data of programs and for documents; empty when the user has none.
std::filesystem::path user_data_directory();      // $XDG_DATA_HOME, or ~/.local/share
std::filesystem::path user_documents_directory(); // as the desktop's user-dirs.dirs has it, or ~/Documents

bool is_writable_directory(const std::filesystem::path& directory);

} // namespace vesk
