#include "shell/keywords/dictionary.h"

#include "shell/shell_interface.h"

#include "platform/safe_file.h"

#include <ostream>
#include <sstream>

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
  std::ostringstream text;
  shell_interface().write_dictionary(text);
  try {
    safe_file target(file);
    write_all(target.descriptor(), text.str(), {}, file.string());
    target.commit();
    return true;
  } catch (const file_open_exception&) {
    return false;
  }
}

} // namespace vesk
