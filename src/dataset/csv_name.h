// The name of a CSV output, which engines put at the end of a result's name.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// Why `name` is refused, as in "the name \"a/b\" has a path separator"; empty when it is not. Models come from
// anywhere, and the name must not lead out of the data file's folder. An empty name is good: the engine then has one.
std::string csv_name_fault(std::string_view name);

} // namespace vesk
