#include "tables.h"

#include "dataset/moment.h"
#include "dataset/text_encoding.h"
#include "demand.h"
#include "query/sql/table_module.h"
#include "scratch.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sqlite3.h>
#include <zlib.h>

namespace vesk::fuzz {

namespace {

// The first value of a field that a filter can be made for.
struct sample {
  std::size_t field;
  value_kind kind;
  std::string text;
  double number;
};

bool has(const table_value& value, const sample& wanted) {
  if (value.kind() != wanted.kind) return false;
  return wanted.kind == value_kind::text ? value.text() == wanted.text : value.number() == wanted.number;
}

std::uint64_t rows_with(row_cursor& rows, const sample& wanted) {
  std::uint64_t found = 0;
  while (rows.next()) found += has(rows.value(wanted.field), wanted);
  return found;
}

void check_value(const table_value& value) {
  switch (value.kind()) {
  case value_kind::text: return demand(is_utf8(value.text()), "a text is no UTF-8");
  case value_kind::date_time:
    demand(std::isfinite(value.number()), "a date-time is not finite");
    moment_type::from_date_time(value.number());
    return;
  default: return;
  }
}

void check_fields(const std::vector<table_field>& fields) {
  demand(!fields.empty(), "no fields");
  constexpr std::size_t most_compared = 300;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    demand(!fields[i].name.empty() && is_utf8(fields[i].name), "a field's name is empty or no UTF-8");
    for (std::size_t k = 0; k < std::min(i, most_compared); ++k)
      demand(!equal_ignoring_case(fields[i].name, fields[k].name), "two fields have one name");
  }
}

void check_filter(table_source& source, std::size_t table, const sample& wanted) {
  row_filter filter;
  filter.field = wanted.field;
  filter.kind = wanted.kind == value_kind::text ? row_filter::test::equal_text : row_filter::test::at_least;
  filter.text = wanted.text;
  filter.number = wanted.number;
  demand(rows_with(*source.rows(table), wanted) == rows_with(*source.rows(table, {filter}), wanted),
         "a filter leaves out a row that has its value");
}

// More columns than SQLite takes end in its own sentence.
void check_count(table_source& source, std::size_t table, std::uint64_t rows) {
  constexpr std::size_t most_columns = 2000;
  module_table described{.source = source, .table = table, .fields = source.fields(table), .ignore_case = false};
  if (described.fields.size() > most_columns) return;
  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
  demand(sqlite3_open(":memory:", &database) == SQLITE_OK, "Cannot start SQLite");
  attach_table(database, "source", described);
  if (sqlite3_prepare_v2(database, "SELECT count(*) FROM source", -1, &statement, nullptr) != SQLITE_OK)
    fail(std::string("SQLite does not take the table: ") + sqlite3_errmsg(database));
  demand(sqlite3_step(statement) == SQLITE_ROW, "SQLite does not read the table");
  demand(static_cast<std::uint64_t>(sqlite3_column_int64(statement, 0)) == rows, "SQLite counts other rows");
  sqlite3_finalize(statement);
  sqlite3_close(database);
}

void read_table(table_source& source, std::size_t table) {
  constexpr std::uint64_t most_values = 2'000'000; // beyond that only the opening is of interest
  const std::vector<table_field> fields = source.fields(table);
  check_fields(fields);
  std::optional<sample> noted;
  std::uint64_t rows = 0;
  {
    const auto cursor = source.rows(table);
    for (; cursor->next(); ++rows) {
      if (rows * fields.size() > most_values) return;
      for (std::size_t i = 0; i < fields.size(); ++i) {
        const table_value value = cursor->value(i);
        check_value(value);
        if (noted || value.is_null()) continue;
        const bool is_text = value.kind() == value_kind::text;
        noted = sample{i, value.kind(), is_text ? std::string(value.text()) : "", is_text ? 0 : value.number()};
      }
    }
    demand(cursor->row_number() == rows, "the number of rows is not told");
  }
  check_count(source, table, rows);
  constexpr std::uint64_t most_filtered = 10000;
  if (noted && rows <= most_filtered) check_filter(source, table, *noted);
}

template <class Number>
void append(std::vector<char>& bytes, Number number) {
  const auto* const begin = reinterpret_cast<const char*>(&number);
  bytes.insert(bytes.end(), begin, begin + sizeof number);
}

void append(std::vector<char>& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

// Puts parts into an archive, stored as they are (PKWARE's APPNOTE, 4.3).
class zip_writer {
public:
  void add(std::string_view name, std::string_view content) {
    const auto offset = static_cast<std::uint32_t>(bytes_.size());
    append(bytes_, std::uint32_t{0x04034b50});
    append_common(bytes_, name, content);
    append(bytes_, name);
    append(bytes_, content);
    append(directory_, std::uint32_t{0x02014b50});
    append(directory_, version);
    append_common(directory_, name, content);
    for (int i = 0; i < 5; ++i) append(directory_, std::uint16_t{0}); // comment, disk, attributes
    append(directory_, offset);
    append(directory_, name);
    ++parts_;
  }

  std::vector<char> finish() && {
    const auto offset = static_cast<std::uint32_t>(bytes_.size());
    bytes_.insert(bytes_.end(), directory_.begin(), directory_.end());
    append(bytes_, std::uint32_t{0x06054b50});
    append(bytes_, std::uint32_t{0}); // disks
    append(bytes_, parts_);
    append(bytes_, parts_);
    append(bytes_, static_cast<std::uint32_t>(directory_.size()));
    append(bytes_, offset);
    append(bytes_, std::uint16_t{0});
    return std::move(bytes_);
  }

private:
  static constexpr std::uint16_t version = 20;

  static void append_common(std::vector<char>& to, std::string_view name, std::string_view content) {
    append(to, version);
    append(to, std::uint16_t{0}); // flags
    append(to, std::uint16_t{0}); // stored
    append(to, std::uint32_t{0}); // time and date
    const auto size = static_cast<std::uint32_t>(content.size());
    append(to, static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(content.data()), size)));
    append(to, size);
    append(to, size);
    append(to, static_cast<std::uint16_t>(name.size()));
    append(to, std::uint16_t{0}); // extra field
  }

  std::vector<char> bytes_, directory_;
  std::uint16_t parts_ = 0;
};

} // namespace

void read_tables(const table_opener& open, const std::string& name) {
  try {
    const auto source = open();
    demand(!source->tables().empty(), "no tables");
    constexpr std::size_t most_tables = 50; // what has been read of each stays
    for (std::size_t table = 0; table < std::min(most_tables, source->tables().size()); ++table) {
      try {
        read_table(*source, table);
      } catch (const table_source_exception& refusal) { // the next one may be good
        demand_sentence(refusal.what(), name);
      }
    }
  } catch (const table_source_exception& refusal) {
    demand_sentence(refusal.what(), name);
  }
}

table_and_memo::table_and_memo(const std::uint8_t* bytes, std::size_t size) {
  constexpr std::string_view mark = "MEMO";
  std::string_view text = as_text(bytes, size);
  std::uint32_t table_size = 0;
  if (text.starts_with(mark) && text.size() >= mark.size() + sizeof table_size) {
    std::memcpy(&table_size, text.data() + mark.size(), sizeof table_size);
    text.remove_prefix(mark.size() + sizeof table_size);
    const std::string_view behind = text.substr(std::min<std::size_t>(table_size, text.size()));
    memo.emplace(behind.begin(), behind.end());
    text.remove_suffix(behind.size());
  }
  table.assign(text.begin(), text.end());
}

std::optional<std::span<const std::byte>> table_and_memo::memo_bytes() const {
  if (!memo) return {};
  return std::as_bytes(std::span(*memo));
}

std::vector<char> zipped_workbook(const std::uint8_t* bytes, std::size_t size) {
  std::string_view text = as_text(bytes, size);
  if (text.starts_with("PK")) return {text.begin(), text.end()};
  constexpr std::string_view head = "== ";
  zip_writer archive;
  while (text.starts_with(head)) {
    const std::size_t line = std::min(text.find('\n'), text.size());
    const std::string_view name = text.substr(head.size(), line - head.size());
    text.remove_prefix(std::min(line + 1, text.size()));
    const std::size_t end = text.starts_with(head) ? 0 : std::min(text.find("\n== "), text.size());
    archive.add(name.substr(0, 200), text.substr(0, end));
    text.remove_prefix(text.starts_with(head) ? 0 : std::min(end + 1, text.size()));
  }
  return std::move(archive).finish();
}

} // namespace vesk::fuzz
