// Text files with one table, .csv and .txt: separated by commas, semicolons, tabs or vertical bars.
#pragma once

#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

namespace vesk {

// Reads the whole file once to determine its form: the separator, title lines above the header, and for each column
// whether it contains texts, numbers (with a decimal point or comma) or dates (and their order). Texts are UTF-8 or
// Windows-1252, or UTF-16 with a byte order mark. In a column of numbers or dates other texts remain texts. A row may
// have up to 4 MiB. Throws table_source_exception.
std::unique_ptr<table_source> open_csv(const std::filesystem::path& file);

// The same with the file's bytes in memory, which the caller keeps; `name` is for messages. `in_pieces`: read through a
// window, like a file.
std::unique_ptr<table_source> open_csv(std::span<const std::byte> bytes, std::string name, bool in_pieces = false);

} // namespace vesk
