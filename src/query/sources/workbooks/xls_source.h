// Excel workbooks before 2007, .xls: BIFF8 and BIFF5, in a compound file or as a bare stream.
#pragma once

#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

namespace vesk {

// The tables are the worksheets, including hidden ones. Formulas give the result saved with them. Header and column
// types are found as in `cell_table`. Workbooks with a password are refused. Throws table_source_exception.
std::unique_ptr<table_source> open_xls(const std::filesystem::path& file);

// The same with the file's bytes in memory, which the caller keeps; `name` is for messages.
std::unique_ptr<table_source> open_xls(std::span<const std::byte> bytes, std::string name);

} // namespace vesk
