// Opens a SQLite file for reading without writing anything, not even a file in its folder.
#pragma once

#include <memory>
#include <string>

struct sqlite3;

namespace vesk {

struct close_sqlite {
  void operator()(sqlite3* database) const; // takes effect once the last statement has been finalized
};
using sqlite_handle = std::unique_ptr<sqlite3, close_sqlite>;

// Opens the database and begins a read transaction that lasts as long as the handle: all statements see the same state
// of the file. Waits at most 2 seconds for another program's lock. Throws table_source_exception, also if the file is
// shorter than its header states.
sqlite_handle open_sqlite_file(const std::string& file);

} // namespace vesk
