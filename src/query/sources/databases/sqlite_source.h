// SQLite databases: their tables and views.
#pragma once

#include "query/sources/table_source.h"

#include <filesystem>
#include <memory>

namespace vesk {

// Opens the file read-only. A column has its declared type, with one exception: a column declared as text or number, or
// without a type, is a date column if all values in its first `rows_sampled` rows are texts with ISO dates. Date
// columns may contain anything that SQLite's own date functions accept: ISO texts, Julian days as real numbers, seconds
// since 1970 as integers. Other texts that do not match their column's type remain texts, unless they mark a missing
// value. Throws table_source_exception.
std::unique_ptr<table_source> open_sqlite(const std::filesystem::path& file);

inline constexpr int rows_sampled = 10000;

} // namespace vesk
