#include "shell/handlers/format_values.h"
#include "shell/handlers/special_handlers.h"
#include "shell/handlers/values.h"

#include <initializer_list>
#include <string>

namespace vesk::handlers {

namespace {

// If the format does not match the values, the result is an empty text, and a warning is logged.
void print(const shell_interface& shell, char* output, const char* format, std::initializer_list<format_value> values) {
  const auto text = format_values(format, {values.begin(), values.size()});
  if (!text) shell.warn(std::string("the format \"") + format + "\" does not match its values");
  copy_text(text.value_or(""), output);
}

format_value widened(float value) {
  return static_cast<double>(value);
}

} // namespace

void sprintf_i(shell_interface& shell, char* output, char* format, std::int32_t& integer1) {
  print(shell, output, format, {integer1});
}

void sprintf_r(shell_interface& shell, char* output, char* format, float& real1) {
  print(shell, output, format, {widened(real1)});
}

void sprintf_ii(shell_interface& shell, char* output, char* format, std::int32_t& integer1, std::int32_t& integer2) {
  print(shell, output, format, {integer1, integer2});
}

void sprintf_rr(shell_interface& shell, char* output, char* format, float& real1, float& real2) {
  print(shell, output, format, {widened(real1), widened(real2)});
}

void sprintf_ir(shell_interface& shell, char* output, char* format, std::int32_t& integer1, float& real1) {
  print(shell, output, format, {integer1, widened(real1)});
}

void sprintf_ri(shell_interface& shell, char* output, char* format, float& real1, std::int32_t& integer1) {
  print(shell, output, format, {widened(real1), integer1});
}

} // namespace vesk::handlers
