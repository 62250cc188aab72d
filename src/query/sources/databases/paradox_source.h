// Paradox tables, .db: versions 3.0 to 7, with their .mb memo files.
#pragma once

#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace vesk {

// Rows come in the order of the table's blocks, which is that of its primary key. Text is decoded with the code page in
// the header. Also reads a memo file in the same folder; without it a memo is only the part stored in the record, and
// other blobs are null. Encrypted tables are refused. Throws table_source_exception.
std::unique_ptr<table_source> open_paradox(const std::filesystem::path& file);

// The same with the bytes of table and memo file in memory, which the caller keeps; `name` is for messages.
std::unique_ptr<table_source> open_paradox(std::span<const std::byte> table,
                                           std::optional<std::span<const std::byte>> blobs, std::string name);

} // namespace vesk
