// SQLite databases: their tables and views.
#pragma once

#include "query/sources/table_source.h"

#include <filesystem>
#include <memory>

namespace vesk {

// Opens the file read-only. A column's type is the one it is declared with; one declared as text or as a number, or not
// at all, is one of dates when what its first `rows_sampled` rows hold are texts and all of them dates in ISO form.
// Columns of dates may hold what SQLite's own date functions take: ISO texts, Julian days as real numbers, seconds
// since 1970 as integers. Other texts that do not fit their column's type stay texts, unless they mark a missing value.
// Throws table_source_exception.
std::unique_ptr<table_source> open_sqlite(const std::filesystem::path& file);

inline constexpr int rows_sampled = 10000;

} // namespace vesk
