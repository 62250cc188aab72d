// Formatted printing with a format text given by an engine.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace vesk {

using format_value = std::variant<std::int32_t, double>;

// `format` as printed by the C library with `values` in order. Conversions: d i u x X o c for an integer, e E f F g G a
// A for a real, with flags, a width and a precision of up to 255, and a length modifier l, which has no effect. Extra
// values are ignored. Nothing for any other conversion, or one that does not match its value or has none.
std::optional<std::string> format_values(std::string_view format, std::span<const format_value> values);

} // namespace vesk
