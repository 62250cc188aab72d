// File names in commands: split into folder, base and extension, compared in upper case. Both "/" and "\" separate
// folders, on every platform.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

struct file_name_parts {
  std::string folder;    // including the separator; empty if the name has none
  std::string base;      // without the extension
  std::string extension; // including the dot; empty if the name has none
};

file_name_parts split_file_name(std::string_view name);

// The name without its folder: "river.vki".
std::string leaf_of(std::string_view name);

// `name`, with `ending` (".vki") appended unless it already has it, ignoring case.
std::string with_ending(std::string name, std::string_view ending);

// The extension in upper case, including the dot: ".VKI".
std::string upper_extension(std::string_view name);

} // namespace vesk
