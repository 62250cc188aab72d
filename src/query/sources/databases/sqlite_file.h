// A SQLite file that is opened to be read and left as it was: nothing is written, not even beside it.
#pragma once

#include <memory>
#include <string>

struct sqlite3;

namespace vesk {

struct close_sqlite {
  void operator()(sqlite3* database) const; // takes effect once the last statement has been finalized
};
using sqlite_handle = std::unique_ptr<sqlite3, close_sqlite>;

// Opens the database and starts a read transaction, which lasts as long as the handle: all statements see the same
// state of the file. Waits at most 2 seconds for another program's lock. Throws table_source_exception, also for a file
// that is shorter than its header says.
sqlite_handle open_sqlite_file(const std::string& file);

} // namespace vesk
