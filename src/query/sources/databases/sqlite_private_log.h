// Reads a SQLite database whose write-ahead log has no index, without creating the index file.
#pragma once

namespace vesk {

// The name of an SQLite VFS that keeps the log's index in memory, for one connection at a time, to a database that no
// other program has open. Nothing is written. Any thread.
const char* sqlite_private_log();

} // namespace vesk
