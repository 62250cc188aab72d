// The trace of each call in the log.
#include "shell/handlers/special_handlers.h"
#include "shell/shell_interface.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace vesk {

namespace {

// A buffer that a GET will fill may contain anything, so no more of it is read than the size that every engine
// provides. Other texts are shown up to the length of the longest path.
constexpr std::size_t longest_text_before_get = 255;
constexpr std::size_t longest_text = 4096;

std::string real_text(float value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", static_cast<double>(value));
  return text;
}

// The argument's name, current value and type; empty if the type does not exist.
std::string variable_text(const variable_description& variable, const void* word, std::size_t longest) {
  std::string line(variable.name);
  line += ": ";
  switch (variable.type) {
  case INTEGER:
    if (word) line += std::to_string(*static_cast<const std::int32_t*>(word));
    return line + " (INTEGER)";
  case REAL:
    if (word) line += real_text(*static_cast<const float*>(word));
    return line + " (REAL)";
  case STRING:
    if (word) line.append(static_cast<const char*>(word), strnlen(static_cast<const char*>(word), longest));
    return line + " (STRING)";
  default: return {};
  }
}

// Labels are packed in slots of the given width, without terminator, so at most the first slot is shown, and nothing if
// the numbers mean that no label is read.
std::size_t first_label(argument_words words, std::size_t longest) {
  const auto number = [&](std::size_t i) { return words[i] ? *static_cast<const std::int32_t*>(words[i]) : 0; };
  const std::int32_t width = number(1), columns = number(2);
  if (width < 0 || width > handlers::widest_label || columns < 1 || columns > handlers::most_grid_columns) return 0;
  return std::min(static_cast<std::size_t>(width), longest);
}

} // namespace

void shell_interface::trace_variables(const function_description& function, argument_words words,
                                      std::size_t longest) const {
  if (function.keyword == "GRIDINIT") longest = first_label(words, longest);
  for (std::size_t i = 0; i < function.variables.size(); ++i)
    if (const std::string line = variable_text(function.variables[i], words[i], longest); !line.empty()) log(line);
}

void shell_interface::trace_head(const function_description& function, argument_words words) const {
  log("");
  log(is_get ? "Mode: GET" : "Mode: PUT");
  log(std::string("Keyword: ").append(function.keyword));
  log(std::string("Description: ").append(function.description));
  log("Input Parameters: ");
  trace_variables(function, words, is_get ? longest_text_before_get : longest_text);
}

void shell_interface::trace_tail(const function_description& function, argument_words words) const {
  log("Output Parameters: ");
  trace_variables(function, words, longest_text);
}

} // namespace vesk
