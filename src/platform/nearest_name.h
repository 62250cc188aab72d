// Finds the known name that a misspelt one most likely means.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vesk {

// The one of `names`, which must not be empty, that is the fewest single-character edits from `name`; the first if
// there are several.
std::string_view nearest_name(std::string_view name, std::span<const std::string_view> names);

// For the end of a sentence that refuses `name`: "; the nearest is volume", or nothing where more than half of its
// letters would have to change.
std::string nearest_hint(std::string_view name, std::span<const std::string_view> names);

} // namespace vesk
