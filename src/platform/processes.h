// Programs outside this one, and this one's own urgency.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// Splits a command line at its blanks; double-quote marks keep the text between them together and are removed.
std::vector<std::string> split_command_line(std::string_view line);

// The file of a program. A name without a folder is looked for in `beside` and then on the search path. A name that
// ends in ".exe" is also looked for without that. Empty when there is no such program.
std::filesystem::path find_program(const std::string& name, const std::filesystem::path& beside);

// Starts a program, found as described above, without a shell and without waiting for it; `arguments` begin
// with its name. `folder`: its working folder; empty: the current one. False when it cannot be started. Nothing of the
// process remains when it ends.
bool start_program(const std::vector<std::string>& arguments, const std::filesystem::path& folder = {});

// Lets the desktop open a file or a link with its default program. Success is not reported.
void open_with_desktop(const std::string& file_or_link, const std::filesystem::path& folder);

// The nice value of this process: of its first thread.
int process_nice();

// Sets the nice value of all threads of this process, -20 (most urgent) to 19; threads made later take it over from
// their maker. False where the system refuses; those that were changed by then are set back to `otherwise`.
bool set_process_nice(int nice, int otherwise);

} // namespace vesk
