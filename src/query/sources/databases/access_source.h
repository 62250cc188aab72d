// Access databases, .mdb and .accdb, read by the helper program vesk-mdb.
#pragma once

#include "query/sources/table_source.h"

#include <filesystem>
#include <memory>

namespace vesk {

inline constexpr std::string_view jet_signature("Standard Jet DB", 15), ace_signature("Standard ACE DB", 15);
inline constexpr std::size_t access_signature_offset = 4;

// The tables are those created by users, without queries and linked tables. A table is read when first requested, and
// kept in memory. The helper must be in the folder of this program or in <prefix>/lib/vesk. Memos are truncated after
// 64 KiB. Throws table_source_exception, also if the helper fails or is silent for too long.
std::unique_ptr<table_source> open_access(const std::filesystem::path& file);

} // namespace vesk
