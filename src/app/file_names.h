// File names as the commands use them: split into folder, base and extension, compared in upper case. Both "/" and
// "\" separate folders, on every platform.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

struct file_name_parts {
  std::string folder;    // with the separator at its end; empty when the name has none
  std::string base;      // without the extension
  std::string extension; // with the dot; empty when the name has none
};

file_name_parts split_file_name(std::string_view name);

// The name without its folder: "river.vki".
std::string leaf_of(std::string_view name);

// `name`, with `ending` (".vki") appended unless it already ends so, ignoring case.
std::string with_ending(std::string name, std::string_view ending);

// The extension in upper case, with the dot: ".VKI".
std::string upper_extension(std::string_view name);

} // namespace vesk
