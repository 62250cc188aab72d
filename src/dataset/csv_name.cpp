#include "dataset/csv_name.h"

#include "dataset/text_encoding.h"

namespace vesk {

std::string csv_name_fault(std::string_view name) {
  const auto fault = [name](const char* cause) { return "the name \"" + std::string(name) + "\" " + cause; };
  if (name.find_first_of("/\\") != name.npos) return fault("has a path separator");
  const std::string text = shown_text(name);
  for (std::string_view rest = text; !rest.empty();) {
    const auto [character, length] = first_character(rest);
    if (character < 0x20 || (character >= 0x7f && character < 0xa0)) return fault("has a control character");
    rest.remove_prefix(length);
  }
  if (name == "." || name == "..") return fault("is a folder's");
  return {};
}

} // namespace vesk
