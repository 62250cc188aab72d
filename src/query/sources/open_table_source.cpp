#include "query/sources/open_table_source.h"

#include "platform/file_io.h"
#include "query/sources/bytes/byte_source.h"
#include "query/sources/databases/access_source.h"
#include "query/sources/databases/dbf_source.h"
#include "query/sources/databases/paradox_source.h"
#include "query/sources/databases/sqlite_source.h"
#include "query/sources/text/csv_source.h"
#include "query/sources/workbooks/compound_file.h"
#include "query/sources/workbooks/ods_source.h"
#include "query/sources/workbooks/xls_source.h"
#include "query/sources/workbooks/xlsx_source.h"
#include "query/sources/workbooks/zip_archive.h"

#include <string>
#include <string_view>

namespace vesk {

namespace {

namespace fs = std::filesystem;

using opener = std::unique_ptr<table_source> (*)(const fs::path&);

// A format that can have several tables.
struct table_format {
  opener open;
  const char* name;
  const char* extension; // the usual one
};

constexpr table_format sqlite{open_sqlite, "a SQLite database", ".sqlite"},
    access{open_access, "an Access database", ".mdb"}, xls{open_xls, "an Excel workbook", ".xls"},
    xlsx{open_xlsx, "an Excel workbook", ".xlsx"}, ods{open_ods, "an OpenDocument workbook", ".ods"},
    zipped{nullptr, nullptr, nullptr}; // the parts of the archive decide

// The first bytes of a file, which identify its format.
struct signature {
  std::size_t offset;
  std::string_view bytes;
  const table_format& format;
};

struct extension_row {
  std::string_view extension;
  bool several_tables;
  opener open; // nullptr: depends on the content
};

constexpr std::size_t beginning_size = 64;

constexpr std::string_view sqlite_beginning("SQLite format 3\0", 16);

constexpr signature signatures[] = {
    {0, sqlite_beginning, sqlite},
    {access_signature_offset, jet_signature, access},
    {access_signature_offset, ace_signature, access},
    {0, compound_beginning, xls},
    {0, zip_beginning, zipped},
    {0, {"\x09\x08", 2}, xls}, // a workbook stream without a compound file
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
  std::error_code unknown; // opening reports the cause
  const fs::file_status status = fs::status(file, unknown);
  if (fs::exists(status) && !fs::is_regular_file(status)) // opening a pipe would wait for a writer
    throw table_source_exception(file.string(), "", "", "not a regular file.");
  const file_descriptor descriptor = open_for_reading(file);
  std::string bytes(beginning_size, '\0');
  bytes.resize(read_at(descriptor.get(), 0, bytes.data(), bytes.size(), nullptr, 0, file.native()));
  return bytes;
}

// If the archive has neither part, the name decides, so that the message names the part expected.
const table_format& format_of_archive(const fs::path& file) {
  const auto bytes = open_bytes(file);
  const zip_archive archive(*bytes);
  if (archive.has("content.xml")) return ods;
  if (archive.has("_rels/.rels") || archive.has("xl/workbook.xml")) return xlsx;
  for (const table_format* format : {&ods, &xlsx})
    if (equal_ignoring_case(file.extension().string(), format->extension)) return *format;
  throw table_source_exception(file.string(), "", "", "the zip archive contains no workbook.");
}

std::unique_ptr<table_source> open_as(const table_format& format, const fs::path& file) {
  if (!has_several_tables(file))
    throw table_source_exception(file.string(), "", "",
                                 "it is " + std::string(format.name) +
                                     " with the extension of a single table; rename it to end with " +
                                     format.extension + ".");
  return format.open(file);
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
    if (holds(bytes, s.offset, s.bytes))
      return open_as(&s.format == &zipped ? format_of_archive(file) : s.format, file);
  const extension_row* row = row_of(file);
  if (row && row->open) return row->open(file);
  if (row)
    throw table_source_exception(file.string(), "", "",
                                 "its content is not that of a " + std::string(row->extension) + " file.");
  throw table_source_exception(
      file.string(), "", "",
      "unknown format: neither the content nor the extension is that of a supported table file.");
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
