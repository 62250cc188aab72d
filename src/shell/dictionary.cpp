#include "shell/dictionary.h"

#include "shell/shell_interface.h"

#include <fstream>
#include <ostream>

namespace vesk {

namespace {

std::string_view type_text(std::uint8_t type) {
  switch (type) {
  case INTEGER: return " (INTEGER)";
  case REAL: return " (REAL)";
  case STRING: return " (STRING)";
  default: return "";
  }
}

} // namespace

void function_description::write(std::ostream& stream) const {
  stream << '\n' << keyword << "\n\tDATAFUNC" << variables.size() << "\n\t" << description << '\n';
  for (const variable_description& variable : variables)
    stream << "\t\t" << variable.name << " : " << type_text(variable.type) << '\n';
}

void shell_interface::write_dictionary(std::ostream& stream) const {
  for (const function_description& function : functions) function.write(stream);
}

bool write_dictionary_file(const std::filesystem::path& file) {
  std::ofstream stream(file, std::ios::binary);
  if (!stream) return false;
  shell_interface().write_dictionary(stream);
  return true;
}

} // namespace vesk
