// The program's folder, and folders that it may write to.
#pragma once

#include <filesystem>

namespace vesk {

std::filesystem::path program_directory(); // the folder of the executable
std::filesystem::path install_prefix();    // the folder above it: <prefix> of <prefix>/bin

// $HOME; if it is not set, the home directory in the system's list of accounts. Empty if there is none.
std::filesystem::path home_directory();

// $XDG_STATE_HOME/vesk, or ~/.local/state/vesk. Not created here. Empty if the user has no home directory.
std::filesystem::path state_directory();

// The default folder for logs: the program's folder if the program is not installed and the user may write there, as in
// a build; otherwise state_directory(). Even root, who may write anywhere, does not get the folder of an installed
// program.
std::filesystem::path log_directory(const std::filesystem::path& program_folder);

// The user's folders for application data and for documents; empty if the user has none.
std::filesystem::path user_data_directory();      // $XDG_DATA_HOME, or ~/.local/share
std::filesystem::path user_documents_directory(); // from the desktop's user-dirs.dirs, or ~/Documents

bool is_writable_directory(const std::filesystem::path& directory);

} // namespace vesk
