// vesk-mdb: reads an Access database for its parent process. If a damaged database takes over the library for this
// format, it can reach neither the parent program nor another file. See protocol.h.

#include "query/mdb_helper/protocol.h"
#include "query/sources/table_source.h"
#include "sandbox/confine.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iconv.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <mdbtools.h>

namespace {

using vesk::field_type;
using vesk::mdb::message;
using vesk::mdb::value;

constexpr std::size_t longest_text = std::size_t{64} << 10; // in bytes; longer memos are truncated
constexpr int large_number = 0x13;                          // a 64-bit integer, missing in the library's list

// A failure, reported to the parent.
struct failure {
  std::string sentence;
};

// The stream read by the parent. The library prints complaints about damaged files to standard output, which is
// therefore redirected.
std::FILE* answer = nullptr;

bool open_answer() {
  answer = fdopen(dup(STDOUT_FILENO), "w");
  return answer && std::freopen("/dev/null", "w", stdout);
}

void send(message kind, const std::string& content) {
  const auto size = static_cast<std::uint32_t>(content.size());
  std::fwrite(&size, sizeof size, 1, answer);
  std::fputc(static_cast<int>(kind), answer);
  std::fwrite(content.data(), 1, content.size(), answer);
}

struct close_database {
  void operator()(MdbHandle* database) const { mdb_close(database); }
};
struct free_table {
  void operator()(MdbTableDef* table) const { mdb_free_tabledef(table); }
};
using database_handle = std::unique_ptr<MdbHandle, close_database>;
using table_handle = std::unique_ptr<MdbTableDef, free_table>;

database_handle open_database(const char* file) {
  database_handle database(mdb_open(file, MDB_NOFLAGS));
  if (!database) throw failure{"not an Access database of a supported version."};
  mdb_set_bind_size(database.get(), longest_text);
  if (!mdb_read_catalog(database.get(), MDB_TABLE))
    throw failure{"cannot read the list of tables: the database is damaged or encrypted."};
  return database;
}

template <class Visit>
void for_each_table(MdbHandle* database, const Visit& visit) {
  for (unsigned i = 0; i < database->num_catalog; ++i) {
    auto* const entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(database->catalog, i));
    if (entry->object_type == MDB_TABLE && !mdb_is_system_table(entry) && entry->object_name[0] != '~') visit(entry);
  }
}

field_type type_of(const MdbColumn& column) {
  switch (column.col_type) {
  case MDB_BOOL: return field_type::boolean;
  case MDB_BYTE:
  case MDB_INT: return field_type::small_integer;
  case MDB_LONGINT: return column.is_long_auto ? field_type::auto_increment : field_type::integer;
  case MDB_MONEY: return field_type::currency;
  case MDB_FLOAT:
  case MDB_DOUBLE: return field_type::floating;
  case MDB_DATETIME: return field_type::date_time;
  case MDB_BINARY: return field_type::bytes;
  case MDB_TEXT:
  case MDB_REPID: return field_type::string;
  case MDB_OLE: return field_type::blob;
  case MDB_MEMO: return field_type::memo;
  case MDB_NUMERIC: return field_type::bcd;
  case large_number: return field_type::large_integer;
  default: return field_type::unknown;
  }
}

// The days of a stored date: before 30 December 1899 the time of day still counts forward.
double date_of(double stored) {
  if (stored >= 0) return stored;
  const double day = std::trunc(stored);
  return day + (day - stored);
}

// The rows of a table, packed.
class row_writer {
public:
  row_writer(MdbHandle* database, MdbTableDef* table)
      : database_(database), table_(table), texts_(table->num_cols), sizes_(table->num_cols) {
    for (unsigned i = 0; i < table->num_cols; ++i) {
      const MdbColumn& c = column(i);
      if (c.col_type == 0) throw failure{"field " + std::string(c.name) + " is damaged."};
      send(message::field, static_cast<char>(type_of(c)) + std::string(c.name));
      if (is_bound(c)) {
        texts_[i].resize(longest_text + 1);
        mdb_bind_column(table, static_cast<int>(i) + 1, texts_[i].data(), &sizes_[i]);
      }
    }
  }

  // Throws if the file no longer contains everything in the table's definition: at a page that it cannot read, the
  // library ends a table silently.
  void write_all() {
    constexpr std::size_t message_size = std::size_t{64} << 10;
    check_pages();
    unsigned long count = 0;
    mdb_rewind_table(table_);
    for (; mdb_fetch_row(table_); ++count) {
      for (unsigned i = 0; i < table_->num_cols; ++i) add(column(i), i);
      if (rows_.size() < message_size) continue;
      send(message::rows, rows_);
      rows_.clear();
    }
    send(message::rows, rows_);
    check_count(count);
  }

private:
  // Each page of the table must be inside the file.
  void check_pages() const {
    const auto page_size = static_cast<unsigned long>(database_->fmt->pg_size);
    const auto pages = static_cast<unsigned long>(file_size() / database_->fmt->pg_size);
    gint32 page = 0;
    while (true) {
      const gint32 next = mdb_map_find_next(database_, table_->usage_map, static_cast<unsigned>(table_->map_sz),
                                            static_cast<guint32>(page));
      if (next <= page) return; // 0 after the last page, -1 if a map cannot be read
      page = next;
      if (static_cast<unsigned long>(page) >= pages)
        throw failure{"the database is truncated: the table uses the page at byte " +
                      std::to_string(static_cast<unsigned long>(page) * page_size) + ", but the file has only " +
                      std::to_string(file_size()) + " bytes."};
    }
  }

  // The definition counts the rows, in some files including deleted ones.
  void check_count(unsigned long count) const {
    if (count >= table_->num_rows) return;
    unsigned long with_deleted = 0;
    table_->noskip_del = 1;
    mdb_rewind_table(table_);
    while (mdb_fetch_row(table_)) ++with_deleted;
    if (with_deleted < table_->num_rows)
      throw failure{"the database is damaged: only " + std::to_string(count) + " of the table's " +
                    std::to_string(table_->num_rows) + " rows can be read."};
  }

  off_t file_size() const {
    struct stat state {};
    if (fstat(fileno(database_->f->stream), &state) != 0) throw failure{"cannot determine the size of the file."};
    return state.st_size;
  }

  const MdbColumn& column(unsigned i) const {
    return *static_cast<const MdbColumn*>(g_ptr_array_index(table_->columns, i));
  }

  // Whether the library converts it to text; other types are read as stored in the row.
  static bool is_bound(const MdbColumn& c) {
    return c.col_type == MDB_BOOL || c.col_type == MDB_MONEY || c.col_type == MDB_TEXT || c.col_type == MDB_MEMO ||
           c.col_type == MDB_REPID || c.col_type == MDB_NUMERIC;
  }

  template <class T>
  void put(value kind, T content) {
    rows_ += static_cast<char>(kind);
    rows_.append(reinterpret_cast<const char*>(&content), sizeof content);
  }
  void put_null() { rows_ += static_cast<char>(value::null); }

  // The bytes of a value of fixed size in the current row.
  template <class T>
  bool stored(const MdbColumn& c, T& content) const {
    const auto start = static_cast<std::size_t>(c.cur_value_start), size = static_cast<std::size_t>(c.cur_value_len);
    if (c.cur_value_start < 0 || c.cur_value_len < 0 || size < sizeof content ||
        start + sizeof content > sizeof database_->pg_buf)
      return false;
    std::memcpy(&content, database_->pg_buf + start, sizeof content);
    return true;
  }
  template <class T>
  void add_integer(const MdbColumn& c) {
    T content;
    if (stored(c, content))
      put(value::integer, std::int64_t{content});
    else
      put_null();
  }
  template <class T>
  void add_number(const MdbColumn& c, value kind) {
    T content;
    if (stored(c, content) && std::isfinite(content))
      put(kind, kind == value::date_time ? date_of(content) : double{content});
    else
      put_null();
  }

  void add(const MdbColumn& c, unsigned i) {
    switch (c.col_type) {
    case MDB_BYTE: return add_integer<std::uint8_t>(c);
    case MDB_INT: return add_integer<std::int16_t>(c);
    case MDB_LONGINT: return add_integer<std::int32_t>(c);
    case large_number: return add_integer<std::int64_t>(c);
    case MDB_FLOAT: return add_number<float>(c, value::number);
    case MDB_DOUBLE: return add_number<double>(c, value::number);
    case MDB_DATETIME: return add_number<double>(c, value::date_time);
    default: break;
    }
    const std::string_view text(texts_[i].data(), is_bound(c) ? std::strlen(texts_[i].data()) : 0);
    if (text.empty() || (c.col_type != MDB_BOOL && c.cur_value_len == 0)) return put_null();
    if (c.col_type == MDB_BOOL) return put(value::integer, std::int64_t{text != "0"});
    if (c.col_type == MDB_MONEY || c.col_type == MDB_NUMERIC) {
      double number = 0;
      const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
      return read.ec == std::errc() ? put(value::number, number) : put_null();
    }
    put(value::text, static_cast<std::uint32_t>(text.size()));
    rows_ += text;
  }

  MdbHandle* database_;
  MdbTableDef* table_;
  std::vector<std::string> texts_; // of bound fields
  std::vector<int> sizes_;
  std::string rows_;
};

void send_rows(MdbHandle* database, const char* name) {
  MdbCatalogEntry* found = nullptr;
  for_each_table(database, [&](MdbCatalogEntry* entry) {
    if (std::strcmp(entry->object_name, name) == 0) found = entry;
  });
  if (!found) throw failure{"the file has no such table."};
  const table_handle table(mdb_read_table(found));
  if (!table || !mdb_read_columns(table.get())) throw failure{"cannot read the fields: the database is damaged."};
  row_writer(database, table.get()).write_all();
}

// The library converts the texts of Access 97 from the code page given in the database. glibc has each conversion in a
// separate library, which can no longer be loaded once this process is confined.
void load_code_pages() {
  for (const char* name :
       {"CP1252",       "WINDOWS-1250", "WINDOWS-1251", "WINDOWS-1252", "WINDOWS-1253", "WINDOWS-1254", "WINDOWS-1255",
        "WINDOWS-1256", "WINDOWS-1257", "WINDOWS-1258", "WINDOWS-874",  "WINDOWS-936",  "SHIFT-JIS",    "BIG-5",
        "BIG5-HKSCS",   "CP1361",       "EUC-CN",       "EUC-JP",       "EUC-KR",       "IBM437",       "IBM850",
        "IBM852",       "IBM855",       "IBM860",       "IBM861",       "IBM862",       "IBM865",       "IBM866",
        "IBM869",       "KOI8-R",       "KOI8-U",       "ISO-8859-1",   "ISO-8859-2",   "ISO-8859-3",   "ISO-8859-4",
        "ISO-8859-5",   "ISO-8859-6",   "ISO-8859-7",   "ISO-8859-8",   "ISO-8859-9",   "ISO-8859-13",  "ISO-8859-15",
        "UTF-7"})
    static_cast<void>(iconv_open("UTF-8", name)); // stays open to keep the conversion loaded
}

// Limits memory and time.
void limit_itself() {
  const rlimit none{0, 0}, seconds{600, 600};
  setrlimit(RLIMIT_CORE, &none);
  setrlimit(RLIMIT_CPU, &seconds);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  const rlimit memory{rlim_t{512} << 20, rlim_t{512} << 20};
  setrlimit(RLIMIT_AS, &memory);
#endif
}

} // namespace

int main(int argc, char** argv) {
  const std::string work = argc > 1 ? argv[1] : "";
  if (!(work == "tables" && argc == 2) && !(work == "rows" && argc == 3)) {
    std::fputs("vesk-mdb reads Access databases for vesk and vesk-run. It cannot be used alone.\n", stderr);
    return 2;
  }
  if (!sandbox::die_with_parent(STDOUT_FILENO)) return 1;
  limit_itself();
  if (!open_answer()) return 1;
  try {
    load_code_pages();
    if (const std::string cause = sandbox::confine_to(vesk::mdb::the_file); !cause.empty())
      throw failure{"cannot confine its reader to this one file: " + cause + "."};
    const database_handle database = open_database(sandbox::name_of(vesk::mdb::the_file).c_str());
    if (work == "tables")
      for_each_table(database.get(), [](const MdbCatalogEntry* entry) { send(message::table, entry->object_name); });
    else
      send_rows(database.get(), argv[2]);
    send(message::end, {});
  } catch (const failure& f) {
    send(message::failure, f.sentence);
  } catch (const std::bad_alloc&) {
    send(message::failure, "reading it takes too much memory: the database is damaged.");
  }
  return std::fflush(answer) == 0 ? 0 : 1;
}
