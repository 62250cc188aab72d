// Import and export of script files: .inp contains a whole data set, .vkn its network, .rst the state at the end of a
// run.
#ifndef REFERENCE_ENGINE_SCRIPT_SCRIPT_H
#define REFERENCE_ENGINE_SCRIPT_SCRIPT_H

#include "host/host.h"
#include "script/keywords.h"

#include <string>

namespace reference_engine {

// The largest counts allowed in a script, also reported to the front end: beyond any model that fits in memory, and
// small enough to catch a garbage number in a file.
struct Limits {
  static constexpr std::int32_t segments = 10'000'000, functions = 1'000'000, breaks = 10'000'000,
                                boundaries = 10'000'000, loads = 10'000'000;
};

// Puts a file's values into the data set. Throws InputError with file, line and cause. Nothing is put before the whole
// file has been read and every line is well-formed; an error in a later check leaves the data set partly filled,
// except by a restart file, whose values are all checked first.
void import_script(Host& host, const std::string& file, Form form);

// Writes the data set to a file, and lists in info lines what the form can't contain.
void export_script(Host& host, const std::string& file, Form form);

} // namespace reference_engine

#endif
