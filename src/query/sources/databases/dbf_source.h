// dBASE tables, .dbf: dBASE III, IV and 7, FoxPro and Visual FoxPro, with their memo files.
#pragma once

#include "query/sources/table_source.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace vesk {

// A memo file beside the table, .dbt or .fpt, is read too; without it memos are null. A file .cpg beside it names the
// code page of its texts, else its header does. Deleted records are passed over. Throws table_source_exception.
std::unique_ptr<table_source> open_dbf(const std::filesystem::path& file);

// The same with the bytes of table and memo file in memory, which stay the caller's; `name` is for messages, `encoding`
// the content of the file .cpg.
std::unique_ptr<table_source> open_dbf(std::span<const std::byte> table, std::optional<std::span<const std::byte>> memo,
                                       std::string name, std::string_view encoding = {});

} // namespace vesk
