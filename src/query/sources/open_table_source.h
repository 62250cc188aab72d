// A table source for a file, chosen by its content.
#pragma once

#include "query/sources/table_source.h"

#include <filesystem>
#include <memory>

namespace vesk {

// The format is identified by the first bytes if possible, otherwise by the extension. Throws table_source_exception.
std::unique_ptr<table_source> open_table_source(const std::filesystem::path& file);

// True for a file of several tables, whose table a query names in brackets: .mdb, .xls, .accdb, .xlsx, .ods, .sqlite,
// and a .db that is a SQLite file. False for a file that is one table, and for a missing file with another extension.
bool has_several_tables(const std::filesystem::path& file);

} // namespace vesk
