// dBASE tables, .dbf: dBASE III, IV and 7, FoxPro and Visual FoxPro, with their memo files.
#pragma once

#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace vesk {

// Also reads a memo file in the same folder, .dbt or .fpt; without it memos are null. The code page of the texts comes
// from a .cpg file in the same folder, otherwise from the header. Deleted records are skipped. Throws
// table_source_exception.
std::unique_ptr<table_source> open_dbf(const std::filesystem::path& file);

// The same with the bytes of table and memo file in memory, which the caller keeps; `name` is for messages, `encoding`
// the content of the .cpg file.
std::unique_ptr<table_source> open_dbf(std::span<const std::byte> table, std::optional<std::span<const std::byte>> memo,
                                       std::string name, std::string_view encoding = {});

} // namespace vesk
