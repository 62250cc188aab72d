// Finding a name in a list.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vesk {

// Whether `name` contains `wanted`, ignoring the case of letters in any script.
bool contains_in_any_case(std::string_view name, std::string_view wanted);

// The first of `count` names that contains `wanted`, starting at position `from` and wrapping around. Nothing if none
// does or `wanted` is empty.
std::optional<std::size_t> find_name(std::size_t count, std::size_t from,
                                     const std::function<std::string(std::size_t)>& name, std::string_view wanted);

} // namespace vesk
