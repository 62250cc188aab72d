// Reads the standard output of another program while it runs.
#pragma once

#include "platform/child_process.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

struct program_end {
  enum class way { exited, signalled, silent, stopped, not_started } how = way::not_started;
  int code = 0; // the exit status, the signal's number, or the system's error number
};

// Runs a program to its end, without a shell and with an empty environment. Of this process's files it gets only
// `file`, as handed_descriptor; its standard input and standard error are discarded. `take` is called with each piece
// of output, and several times a second with nothing while there is none. If it returns false or throws, or there is no
// output for `longest_silence`, the program is killed. No process remains.
program_end read_program(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const file_descriptor& file, std::chrono::milliseconds longest_silence,
                         const std::function<bool(std::string_view)>& take);

} // namespace vesk
