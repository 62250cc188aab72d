// Access databases, .mdb and .accdb, read by the helper program vesk-mdb.
#pragma once

#include "query/sources/table_source.h"

#include <filesystem>
#include <memory>

namespace vesk {

inline constexpr std::string_view jet_signature("Standard Jet DB", 15), ace_signature("Standard ACE DB", 15);
inline constexpr std::size_t access_signature_offset = 4;

// The tables are those that the user made; queries and linked tables are not there. A table is read when it is first
// asked for, and kept. The helper is looked for beside this program and in <prefix>/lib/vesk. Memos are cut after 64
// KiB. Throws table_source_exception, also when the helper fails or is silent for too long.
std::unique_ptr<table_source> open_access(const std::filesystem::path& file);

} // namespace vesk
