// OpenDocument workbooks, .ods.
#pragma once

#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

namespace vesk {

// The tables are the sheets, including hidden ones. Header and types are found as in `cell_table`. Throws
// table_source_exception.
std::unique_ptr<table_source> open_ods(const std::filesystem::path& file);

// The same with the file's bytes in memory, which the caller keeps; `name` is for messages.
std::unique_ptr<table_source> open_ods(std::span<const std::byte> bytes, std::string name);

} // namespace vesk
