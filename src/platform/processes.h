// Starting other programs, and the priority of this one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// Splits a command line at its blanks. Text between double quotes stays together; the quotes are removed.
std::vector<std::string> split_command_line(std::string_view line);

// The file of a program. A name without a folder is looked for in `beside` and then on the search path; a name ending
// in ".exe" also without that ending. Empty if there is no such program.
std::filesystem::path find_program(const std::string& name, const std::filesystem::path& beside);

// Starts a program, found as described above, without a shell and without waiting for it; `arguments` begin with its
// name. `folder`: its working folder; empty for the current one. False if it cannot be started. The process does not
// become a zombie when it ends.
bool start_program(const std::vector<std::string>& arguments, const std::filesystem::path& folder = {});

// Opens a file or link with the desktop's default program. Success is not reported.
void open_with_desktop(const std::string& file_or_link, const std::filesystem::path& folder);

// Whether open_with_desktop can show a web page: xdg-open is installed, and a browser that it would find.
bool desktop_has_browser();

// The nice value of this process, that is, of its first thread.
int process_nice();

// Sets the nice value of all threads of this process, -20 (most urgent) to 19; a new thread inherits it from its
// creator. False if the system refuses; threads changed before that are set to `otherwise`.
bool set_process_nice(int nice, int otherwise);

} // namespace vesk
