// The name of a CSV output, which engines append to a result name.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// Why `name` is refused, as in "the name \"a/b\" has a path separator"; empty if it is valid. Models may come from
// strangers, and the name must not lead out of the data file's folder. An empty name is valid: the engine then chooses
// one.
std::string csv_name_fault(std::string_view name);

} // namespace vesk
