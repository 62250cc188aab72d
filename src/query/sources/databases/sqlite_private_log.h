// Reading a SQLite database whose write-ahead log has no index, without making the index's file.
#pragma once

namespace vesk {

// The name of a VFS of SQLite that keeps the index of the log in memory, for one connection at a time to a database
// that no other program has open. Nothing is written. Any thread.
const char* sqlite_private_log();

} // namespace vesk
