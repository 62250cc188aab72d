// Comma-separated tables with a header, parsed strictly and held in memory. Measured data have a separate, lenient
// reader.
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

  std::size_t column(std::string_view name) const; // header.size() if there is none
};

// UTF-8 with or without a byte order mark; fields may be quoted (RFC 4180); blanks around unquoted fields and empty
// lines are ignored. Throws value_error, which names the line, and file_exception.
csv_table read_csv_table(const std::filesystem::path& file);

// Why a header of one column seems to have been written with semicolons or tabs; empty if it does not.
std::string separator_fault(const csv_table& table);

// The field, quoted if necessary.
std::string csv_field(const std::string& text);

} // namespace vesk
