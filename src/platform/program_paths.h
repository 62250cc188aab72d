// The program's folder and the folders that it may write to.
#pragma once

#include <filesystem>

namespace vesk {

std::filesystem::path program_directory(); // the folder of the executable
std::filesystem::path install_prefix();    // the folder above it: <prefix> of <prefix>/bin

// $HOME; without it the home that the system's list of accounts has. Empty when there is none.
std::filesystem::path home_directory();

// $XDG_STATE_HOME/vesk, or ~/.local/state/vesk. Not created here. Empty when the user has no home.
std::filesystem::path state_directory();

// Where logs go that nobody has named a folder for: the folder of a program that is not installed and that the user may
// write to, as a build's, else the one above. Root may write to the folder of an installed program, too.
std::filesystem::path log_directory(const std::filesystem::path& program_folder);

// The user's folders for the data of programs and for documents; empty when the user has none.
std::filesystem::path user_data_directory();      // $XDG_DATA_HOME, or ~/.local/share
std::filesystem::path user_documents_directory(); // as the desktop's user-dirs.dirs has it, or ~/Documents

bool is_writable_directory(const std::filesystem::path& directory);

} // namespace vesk
