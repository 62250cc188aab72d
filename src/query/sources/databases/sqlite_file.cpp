#include "query/sources/databases/sqlite_file.h"

#include "dataset/text_encoding.h"
#include "query/sources/bytes/byte_source.h"
#include "query/sources/bytes/byte_view.h"
#include "query/sources/databases/sqlite_private_log.h"
#include "query/sources/table_source.h"
#include "query/sqlite_cancel.h"

#include <filesystem>
#include <sqlite3.h>

namespace vesk {

namespace {

constexpr std::size_t header_size = 100;

std::string header_of(const std::string& file) {
  return open_bytes(file)->text(0, header_size);
}

bool has_log(std::string_view header) {
  constexpr char write_ahead = 2;
  return header[18] == write_ahead || header[19] == write_ahead;
}

std::uintmax_t size_of(const std::string& file) {
  std::error_code missing;
  const std::uintmax_t size = std::filesystem::file_size(file, missing);
  return missing ? 0 : size;
}

// Ways to open a database that has a write-ahead log. The library creates a missing log, X-wal, or index, X-shm: this
// fails in a folder without write permission, and leaves both files there in any other.
enum class way {
  shared,      // with the existing index: another program may be writing
  private_log, // a log without an index, as a crash or a copy leaves it
  file_alone   // no log, or an empty one: the file is the whole database
};

way way_to_open(const std::string& file, std::string_view header) {
  if (!has_log(header)) return way::shared;
  const bool has_index = std::filesystem::exists(file + "-shm"), has_log_file = std::filesystem::exists(file + "-wal");
  if (has_index && has_log_file) return way::shared;
  return size_of(file + "-wal") > 0 ? way::private_log : way::file_alone;
}

std::string uri_of(const std::string& file) {
  std::string uri = "file:";
  for (const char c : file) uri += c == '%' ? "%25" : c == '?' ? "%3f" : c == '#' ? "%23" : std::string(1, c);
  return uri + "?immutable=1";
}

std::string cause_of_failure(sqlite3* database) {
  if (!database) return "not enough memory.";
  switch (sqlite3_errcode(database)) {
  case SQLITE_BUSY: return "another program has kept the database locked for more than 2 seconds.";
  case SQLITE_READONLY:
    return "a change to the database was not completed, as after a crash; open it once with a program that may write "
           "to it.";
  default: return shown_text(sqlite3_errmsg(database)) + ".";
  }
}

[[noreturn]] void fail(sqlite3* database, const std::string& file) {
  stop_if_cancelled();
  const bool busy = database && sqlite3_errcode(database) == SQLITE_BUSY;
  throw table_source_exception(file, "", "", cause_of_failure(database), busy ? query_fault::busy : query_fault::unfit);
}

sqlite_handle open_by(way how, const std::string& file) {
  const std::string name = how == way::file_alone ? uri_of(file) : file;
  const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | (how == way::file_alone ? SQLITE_OPEN_URI : 0);
  sqlite3* opened = nullptr;
  const int state =
      sqlite3_open_v2(name.c_str(), &opened, flags, how == way::private_log ? sqlite_private_log() : nullptr);
  sqlite_handle database(opened);
  if (state != SQLITE_OK) fail(opened, file);
  return database;
}

std::uint32_t big_endian(const byte_view& header, std::size_t offset) {
  return __builtin_bswap32(header.number<std::uint32_t>(offset));
}

// The library assumes that the last page is complete and fills the missing part with zeros.
void check_size(const std::string& file, std::string_view header) {
  const byte_view fields(std::as_bytes(std::span(header)), file);
  std::uintmax_t page_size = __builtin_bswap16(fields.number<std::uint16_t>(16));
  if (page_size == 1) page_size = 65536;
  constexpr std::size_t change_counter = 24, page_count = 28, count_valid_for = 92;
  const bool has_count = big_endian(fields, change_counter) == big_endian(fields, count_valid_for);
  const std::uintmax_t size = size_of(file);
  const std::uintmax_t pages = has_count ? big_endian(fields, page_count) : (size + page_size - 1) / page_size;
  if (size < pages * page_size)
    throw table_source_exception(file, "", "",
                                 "the database is truncated: its header states " + std::to_string(pages) +
                                     " pages of " + std::to_string(page_size) + " bytes, but the file has only " +
                                     std::to_string(size) + " bytes.");
}

} // namespace

void close_sqlite::operator()(sqlite3* database) const {
  sqlite3_close_v2(database);
}

sqlite_handle open_sqlite_file(const std::string& file) {
  constexpr int longest_wait = 2000;          // milliseconds
  constexpr int longest_value = 16 << 20;     // bytes; a view can compute values of a gigabyte
  const std::string header = header_of(file); // a program that writes to it does not change how to open it
  sqlite_handle database = open_by(way_to_open(file, header), file);
  sqlite3_busy_timeout(database.get(), longest_wait);
  let_cancel(database.get());
  sqlite3_limit(database.get(), SQLITE_LIMIT_LENGTH, longest_value);
  sqlite3_db_config(database.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(database.get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // Cache size in KiB; small, since tables are read once, in order. The transaction begins with the first read.
  const char* const begin = "PRAGMA cache_size = -256; BEGIN; SELECT 1 FROM sqlite_schema";
  if (sqlite3_exec(database.get(), begin, nullptr, nullptr, nullptr) != SQLITE_OK) fail(database.get(), file);
  if (size_of(file + "-wal") == 0) check_size(file, header_of(file));
  return database;
}

} // namespace vesk
