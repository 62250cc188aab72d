// The standard output of another program, piece by piece, while it runs.
#pragma once

#include "platform/file_io.h"

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

// The descriptor under which the program finds `file`, below.
inline constexpr int handed_descriptor = 3;

// Runs a program to its end, without a shell and with an empty environment; of this process's files it has `file`
// alone. Its standard input and standard error lead nowhere. `take` is given what it writes, and nothing several times
// a second while it writes nothing; when that returns false or throws, or nothing comes for `longest_silence`, the
// program is killed. No part of it remains.
program_end read_program(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const file_descriptor& file, std::chrono::milliseconds longest_silence,
                         const std::function<bool(std::string_view)>& take);

} // namespace vesk
