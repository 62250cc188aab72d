// Comma-separated tables of this program's own: strict, small, wholly in memory. Measured data have another reader,
// which takes what it finds.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

struct csv_table {
  std::string file;                           // for messages
  std::vector<std::string> header;            // no two are equal
  std::vector<std::vector<std::string>> rows; // each as long as the header

  std::size_t column(std::string_view name) const; // header.size() when there is none
};

// UTF-8 with or without a byte order mark; fields may be quoted (RFC 4180); blanks around unquoted fields and empty
// lines are left out. Throws value_error, which names the line, and file_exception.
csv_table read_csv_table(const std::filesystem::path& file);

// The field with quotation marks around it where it needs them.
std::string csv_field(const std::string& text);

} // namespace vesk
