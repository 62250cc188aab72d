// The description of a keyword: its names, arguments, modes and handler.
#pragma once

#include "shell/keywords/keyword_index.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <stdexcept>
#include <string_view>

namespace vesk {

class shell_interface;

// How an argument is passed; the word is always an address, never the value.
enum variable_type : std::uint8_t {
  INTEGER = 0, // std::int32_t
  REAL = 1,    // float, or the first of an array of floats
  STRING = 2,  // NUL-terminated bytes; the size of the engine's buffer is not known
};

// An argument of a keyword. Its name is printed in logs and in the dictionary.
struct variable_description {
  std::uint8_t type = INTEGER;
  std::string_view name;
};

// The number of argument words in a call.
inline constexpr std::size_t max_variables = 5;

// The raw arguments of a call; those after the keyword's last one are undefined.
using argument_words = void* const (&)[max_variables];

// Serves a keyword in the mode given by `is_get` of the shell.
using keyword_handler = void (*)(shell_interface&, argument_words);

enum keyword_modes : std::uint8_t { get = 1, put = 2, get_put = 3 };

// A handler with the types of its arguments, deduced from its C++ function (shell/typed_handler.h).
struct typed_handler {
  static constexpr std::size_t no_handler = max_variables + 1;

  keyword_handler call = nullptr;
  std::array<std::uint8_t, max_variables> types{};
  std::size_t count = no_handler; // of arguments
};

// Up to five arguments in order; more do not compile.
class variable_list {
public:
  constexpr variable_list() = default;
  constexpr variable_list(std::initializer_list<variable_description> variables) {
    if (variables.size() > max_variables) throw std::length_error("a keyword has at most five arguments");
    for (const variable_description& variable : variables) variables_[count_++] = variable;
  }
  constexpr std::size_t size() const { return count_; }
  constexpr const variable_description& operator[](std::size_t i) const { return variables_[i]; }
  constexpr operator std::span<const variable_description>() const { return {variables_.data(), count_}; }

private:
  std::array<variable_description, max_variables> variables_{};
  std::size_t count_ = 0;
};

// A row of the keyword table: everything about one keyword.
struct keyword_row {
  std::string_view keyword{};     // upper case, at most 16 bytes
  std::string_view description{}; // the long name
  variable_list variables{};
  keyword_modes modes = get_put;
  std::string_view refusal{};  // logged in the mode that is not served; empty: no line
  bool changes_series = false; // a PUT may change points, sizes of lists, used flags, the model's start or the model
  typed_handler handler{};
};

// A row as used by one shell, with the time spent in its calls.
struct function_description {
  padded_keyword name{}; // the keyword, in the form compared with the names of calls
  keyword_handler handler = nullptr;
  std::uint32_t elapsed_ms = 0; // spent in the handler since the job began; counted while the job has a log
  keyword_modes modes = get_put;
  bool changes_series = false;
  std::string_view keyword{};
  std::string_view description{};
  std::span<const variable_description> variables{};
  std::string_view refusal{};

  // One entry of the dictionary.
  void write(std::ostream& stream) const;
};

} // namespace vesk
