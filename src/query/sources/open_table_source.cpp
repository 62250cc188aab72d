#include "query/sources/open_table_source.h"

#include "platform/file_io.h"
#include "query/sources/access_source.h"
#include "query/sources/byte_source.h"
#include "query/sources/compound_file.h"
#include "query/sources/csv_source.h"
#include "query/sources/dbf_source.h"
#include "query/sources/ods_source.h"
#include "query/sources/paradox_source.h"
#include "query/sources/sqlite_source.h"
#include "query/sources/xls_source.h"
#include "query/sources/xlsx_source.h"
#include "query/sources/zip_archive.h"

#include <string>
#include <string_view>

namespace vesk {

namespace {

namespace fs = std::filesystem;

using opener = std::unique_ptr<table_source> (*)(const fs::path&);

std::unique_ptr<table_source> open_zipped(const fs::path& file) {
  const bool is_opendocument = zip_archive(*open_bytes(file)).has("content.xml");
  return is_opendocument ? open_ods(file) : open_xlsx(file);
}

// How formats are told from the first bytes of a file.
struct signature {
  std::size_t offset;
  std::string_view bytes;
  opener open;
};

struct extension_row {
  std::string_view extension;
  bool several_tables;
  opener open; // nullptr: the content tells
};

constexpr std::size_t beginning_size = 64;

constexpr std::string_view sqlite_beginning("SQLite format 3\0", 16);

constexpr signature signatures[] = {
    {0, sqlite_beginning, open_sqlite},
    {access_signature_offset, jet_signature, open_access},
    {access_signature_offset, ace_signature, open_access},
    {0, compound_beginning, open_xls},
    {0, zip_beginning, open_zipped},
    {0, {"\x09\x08", 2}, open_xls}, // the workbook's stream alone
};

constexpr extension_row extensions[] = {
    {".dbf", false, open_dbf}, {".db", false, open_paradox}, {".csv", false, open_csv},  {".txt", false, open_csv},
    {".tsv", false, open_csv}, {".mdb", true, nullptr},      {".accdb", true, nullptr},  {".xls", true, nullptr},
    {".xlsx", true, nullptr},  {".ods", true, nullptr},      {".sqlite", true, nullptr},
};

const extension_row* row_of(const fs::path& file) {
  const std::string extension = file.extension().string();
  for (const extension_row& row : extensions)
    if (equal_ignoring_case(row.extension, extension)) return &row;
  return nullptr;
}

std::string beginning(const fs::path& file) {
  std::error_code unknown; // opening tells
  const fs::file_status status = fs::status(file, unknown);
  if (fs::exists(status) && !fs::is_regular_file(status)) // a pipe would wait for a writer
    throw table_source_exception(file.string(), "", "", "it is no file of data.");
  const file_descriptor descriptor = open_for_reading(file);
  std::string bytes(beginning_size, '\0');
  bytes.resize(read_at(descriptor.get(), 0, bytes.data(), bytes.size(), nullptr, 0, file.native()));
  return bytes;
}

bool holds(std::string_view bytes, std::size_t offset, std::string_view part) {
  return bytes.size() >= offset + part.size() && bytes.substr(offset, part.size()) == part;
}

} // namespace

std::unique_ptr<table_source> open_table_source(const fs::path& file) {
  std::string bytes;
  try {
    bytes = beginning(file);
  } catch (const file_exception& error) {
    throw table_source_exception(file.string(), error.what());
  }
  if (bytes.empty()) throw table_source_exception(file.string(), "", "", "the file is empty.");
  for (const signature& s : signatures)
    if (holds(bytes, s.offset, s.bytes)) return s.open(file);
  const extension_row* row = row_of(file);
  if (row && row->open) return row->open(file);
  if (row)
    throw table_source_exception(file.string(), "", "",
                                 "its content is not that of a " + std::string(row->extension) + " file.");
  throw table_source_exception(file.string(), "", "",
                               "neither its content nor its extension is of a kind that tables are read from.");
}

bool has_several_tables(const fs::path& file) {
  const extension_row* row = row_of(file);
  if (row && row->several_tables) return true;
  if (!equal_ignoring_case(file.extension().string(), ".db")) return false;
  try {
    return holds(beginning(file), 0, sqlite_beginning);
  } catch (const file_exception&) {
    return false;
  }
}

} // namespace vesk
