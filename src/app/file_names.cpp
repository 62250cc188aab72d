#include "app/file_names.h"

#include "platform/letter_case.h"

namespace vesk {

file_name_parts split_file_name(std::string_view name) {
  const std::size_t separator = name.find_last_of("/\\");
  const std::size_t base = separator == std::string_view::npos ? 0 : separator + 1;
  std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot < base) dot = name.size();
  return {std::string(name.substr(0, base)), std::string(name.substr(base, dot - base)), std::string(name.substr(dot))};
}

std::string leaf_of(std::string_view name) {
  const file_name_parts parts = split_file_name(name);
  return parts.base + parts.extension;
}

std::string with_ending(std::string name, std::string_view ending) {
  if (!upper_case(name).ends_with(upper_case(ending))) name += ending;
  return name;
}

std::string upper_extension(std::string_view name) {
  return upper_case(split_file_name(name).extension);
}

} // namespace vesk
