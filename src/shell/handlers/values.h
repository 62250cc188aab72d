// Converts between members of records and arguments.
//
// double           REAL: narrowed for a GET, widened for a PUT
//   bool             INTEGER: 0 or 1; any value but 0 is true
// std::uint32_t    INTEGER: unchanged
// std::int32_t     INTEGER: a segment's position, which the engine counts from index_base
//   texts            STRING: whole, with the terminator. Names have at most 255 bytes by their type. A file name longer
//                    than engines have room for throws, so the job fails: it would overrun their buffer
#pragma once

#include "shell/shell_interface.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace vesk {

// Bytes without the terminator, as promised to engines in sdk/vesk_engine.h.
inline constexpr std::size_t longest_file_name = 4095, longest_name = 255;
static_assert(short_text::max_size == longest_name);

inline void to_argument(const shell_interface&, double member, float& argument) {
  argument = static_cast<float>(member);
}
inline void to_argument(const shell_interface&, bool member, std::int32_t& argument) {
  argument = member ? 1 : 0;
}
inline void to_argument(const shell_interface&, std::uint32_t member, std::int32_t& argument) {
  argument = static_cast<std::int32_t>(member);
}
inline void to_argument(const shell_interface& shell, std::int32_t member, std::int32_t& argument) {
  argument =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(member) + static_cast<std::uint32_t>(shell.index_base));
}
inline void copy_text(const std::string& text, char* argument) {
  std::memcpy(argument, text.c_str(), text.size() + 1);
}
inline void to_argument(const shell_interface&, const std::string& file_name, char* argument) {
  if (file_name.size() > longest_file_name)
    throw std::length_error("the file name is " + std::to_string(file_name.size()) +
                            " bytes long, but an engine has room for " + std::to_string(longest_file_name) +
                            "; shorten it.");
  copy_text(file_name, argument);
}
inline void to_argument(const shell_interface&, const short_text& name, char* argument) {
  copy_text(name.str(), argument);
}

inline void from_argument(const shell_interface&, double& member, float argument) {
  member = argument;
}
inline void from_argument(const shell_interface&, bool& member, std::int32_t argument) {
  member = argument != 0;
}
inline void from_argument(const shell_interface&, std::uint32_t& member, std::int32_t argument) {
  member = static_cast<std::uint32_t>(argument);
}
inline void from_argument(const shell_interface& shell, std::int32_t& member, std::int32_t argument) {
  member =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(argument) - static_cast<std::uint32_t>(shell.index_base));
}
inline void from_argument(const shell_interface&, std::string& member, const char* argument) {
  member = argument;
}
inline void from_argument(const shell_interface&, short_text& member, const char* argument) {
  member = argument;
}

namespace detail {
template <class Value>
struct argument_of_value {
  using type = std::int32_t&;
};
template <>
struct argument_of_value<double> {
  using type = float&;
};
template <>
struct argument_of_value<std::string> {
  using type = char*;
};
template <>
struct argument_of_value<short_text> {
  using type = char*;
};
template <class Member>
struct value_of_member;
template <class Class, class Value>
struct value_of_member<Value Class::*> {
  using type = Value;
};
} // namespace detail

// How the member that `Member` points to is passed.
template <auto Member>
using argument_of = typename detail::argument_of_value<typename detail::value_of_member<decltype(Member)>::type>::type;

} // namespace vesk
