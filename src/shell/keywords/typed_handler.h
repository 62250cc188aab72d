// Makes a keyword handler from a C++ function with typed arguments, and keeps the types so that they can be checked
// against the table.
#pragma once

#include "shell/keywords/function_description.h"

#include <type_traits>
#include <utility>

namespace vesk {

namespace detail {

// The type of an argument word: `std::int32_t&`, `float&`, `float*` (an array) or `char*`.
template <class Argument>
Argument argument_cast(void* word) {
  if constexpr (std::is_reference_v<Argument>)
    return *static_cast<std::remove_reference_t<Argument>*>(word);
  else
    return static_cast<Argument>(word);
}

template <class Argument>
constexpr std::uint8_t type_of_argument() {
  if constexpr (std::is_same_v<Argument, std::int32_t&>)
    return INTEGER;
  else if constexpr (std::is_same_v<Argument, float&> || std::is_same_v<Argument, float*>)
    return REAL;
  else {
    static_assert(std::is_same_v<Argument, char*>, "an argument is std::int32_t&, float&, float* or char*");
    return STRING;
  }
}

template <auto Function, class Signature>
struct word_adaptor;

template <auto Function, class... Argument>
struct word_adaptor<Function, void (*)(shell_interface&, Argument...)> {
  static_assert(sizeof...(Argument) <= max_variables);

  static void call(shell_interface& shell, argument_words words) {
    unpack(shell, words, std::index_sequence_for<Argument...>());
  }

  static constexpr typed_handler handler{&call, {type_of_argument<Argument>()...}, sizeof...(Argument)};

private:
  template <std::size_t... I>
  static void unpack(shell_interface& shell, [[maybe_unused]] argument_words words, std::index_sequence<I...>) {
    Function(shell, argument_cast<Argument>(words[I])...);
  }
};

} // namespace detail

// The handler that calls `Function(shell, arguments...)`.
template <auto Function>
inline constexpr typed_handler handler_of = detail::word_adaptor<Function, decltype(Function)>::handler;

} // namespace vesk
