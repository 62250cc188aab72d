// Import and export of the script files: .inp holds a whole data set, .vkn its network, .rst the state that a run left.
#ifndef REFERENCE_ENGINE_SCRIPT_SCRIPT_H
#define REFERENCE_ENGINE_SCRIPT_SCRIPT_H

#include "host/host.h"
#include "script/keywords.h"

#include <string>

namespace reference_engine {

// The largest counts that a script may ask for, and that the front end is told: beyond any model that fits in
// memory, and small enough that a wild number in a file is caught.
struct Limits {
  static constexpr std::int32_t segments = 10'000'000, functions = 1'000'000, breaks = 10'000'000,
                                boundaries = 10'000'000, loads = 10'000'000;
};

// Puts a file's values into the data set. Throws InputError that names file, line and cause; nothing is put before the
// whole file has been read and every line is well-formed. What an error in a later check leaves is a part of the file.
void import_script(Host& host, const std::string& file, Form form);

// Writes the data set to a file, and tells in info lines what it holds that the form can't carry.
void export_script(Host& host, const std::string& file, Form form);

} // namespace reference_engine

#endif
