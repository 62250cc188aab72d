#include "query/sources/databases/access_source.h"

#include "dataset/text_encoding.h"
#include "platform/file_io.h"
#include "platform/helper_program.h"
#include "platform/little_endian.h"
#include "platform/program_output.h"
#include "query/mdb_helper/protocol.h"
#include "query/sources/text/date_text.h"
#include "query/sources/workbooks/sheet_source.h"

#include <cmath>
#include <cstring>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds longest_silence{20};
static_assert(mdb::the_file == handed_descriptor);

class access_source : public sheet_source {
public:
  explicit access_source(const fs::path& path) : sheet_source(path.string()), path_(fs::absolute(path)) {
    check_size();
    ask({"tables"}, "", [&](mdb::message kind, std::string_view content) {
      if (kind == mdb::message::table) tables_.push_back(shown_text(content));
    });
    if (tables_.empty()) fail("", "the database has no tables.");
  }

protected:
  void read_sheet(std::size_t table, cell_table& cells) override;

private:
  using receiver = std::function<void(mdb::message, std::string_view)>;

  void check_size() const;
  file_descriptor open_database() const;
  void ask(const std::vector<std::string>& arguments, const std::string& table, const receiver& receive) const;
  std::uint32_t add_rows(std::string_view content, std::size_t fields, std::size_t table, std::uint32_t row,
                         cell_table& cells);
  [[noreturn]] void fail_answer(const std::string& table) const { fail(table, "vesk-mdb sent a damaged answer."); }

  fs::path path_;
};

// A database consists of whole pages; on a truncated one the library may loop forever.
void access_source::check_size() const {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path_, error);
  constexpr std::uintmax_t smallest_page = 2048;
  if (!error && (size == 0 || size % smallest_page != 0))
    fail("",
         "the database is truncated: its size of " + std::to_string(size) + " bytes is not a whole number of pages.");
}

file_descriptor access_source::open_database() const {
  try {
    return open_for_reading(path_);
  } catch (const file_exception& error) {
    fail("", error.what());
  }
}

// Runs the helper on the open file and processes its messages.
void access_source::ask(const std::vector<std::string>& arguments, const std::string& table,
                        const receiver& receive) const {
  std::string buffer, failure;
  bool ended = false;
  const auto take = [&](std::string_view piece) {
    stop_if_cancelled();
    buffer += piece;
    std::size_t at = 0;
    while (buffer.size() - at >= mdb::header_size) {
      const auto size = little_endian<std::uint32_t>(buffer.data() + at);
      if (size > mdb::largest_message) fail_answer(table);
      if (buffer.size() - at < mdb::header_size + size) break;
      const auto kind = static_cast<mdb::message>(buffer[at + sizeof size]);
      const std::string_view content(buffer.data() + at + mdb::header_size, size);
      if (kind == mdb::message::failure)
        failure = shown_text(content);
      else if (kind == mdb::message::end)
        ended = true;
      else
        receive(kind, content);
      at += mdb::header_size + size;
    }
    buffer.erase(0, at);
    return true;
  };
  const fs::path helper = helper_path("vesk-mdb");
  const program_end end = read_program(helper, arguments, open_database(), longest_silence, take);
  if (!failure.empty()) fail(table, failure);
  if (ended) return;
  using way = program_end::way;
  if (end.how == way::not_started || (end.how == way::exited && end.code == 127))
    fail(table, "cannot start the program that reads Access databases: " + helper.string() + ": " +
                    std::strerror(end.code == 127 ? ENOENT : end.code) + ".");
  if (end.how == way::silent)
    fail(table, "reading made no progress for " + std::to_string(longest_silence.count()) +
                    " seconds: the database is damaged.");
  fail(table,
       "reading failed with " +
           (end.how == way::signalled ? "signal " + std::to_string(end.code) : "status " + std::to_string(end.code)) +
           ": the database is damaged.");
}

// Returns the number of rows so far.
std::uint32_t access_source::add_rows(std::string_view content, std::size_t fields, std::size_t table,
                                      std::uint32_t row, cell_table& cells) {
  const auto take = [&](std::size_t size) {
    if (size > content.size()) fail_answer(tables_[table]);
    const std::string_view taken = content.substr(0, size);
    content.remove_prefix(size);
    return taken;
  };
  const auto number = [&]<class T>(T) { return little_endian<T>(take(sizeof(T)).data()); };
  for (; fields > 0 && !content.empty(); ++row) {
    if (row == cell_table::most_cells) fail_too_large(table);
    for (std::uint32_t f = 0; f < fields; ++f) {
      table_value v;
      const auto kind = static_cast<mdb::value>(number(std::uint8_t{}));
      switch (kind) {
      case mdb::value::null: continue;
      case mdb::value::integer: v = table_value::of_integer(number(std::int64_t{})); break;
      case mdb::value::number:
      case mdb::value::date_time: {
        const double stored = number(double{});
        if (!std::isfinite(stored)) fail_answer(tables_[table]); // the helper sends nulls instead
        v = kind == mdb::value::number ? table_value::of_number(stored)
                                       : table_value::of_date_time(to_milliseconds(stored));
        break;
      }
      case mdb::value::text: v = table_value::of_text(keep(shown_text(take(number(std::uint32_t{}))))); break;
      default: fail_answer(tables_[table]);
      }
      if (!cells.add(row, f, v)) fail_too_large(table);
    }
  }
  return row;
}

void access_source::read_sheet(std::size_t table, cell_table& cells) {
  std::vector<table_field> fields;
  std::vector<std::string> names;
  std::uint32_t rows = 0;
  ask({"rows", tables_[table]}, tables_[table], [&](mdb::message kind, std::string_view content) {
    if (kind == mdb::message::field && !content.empty()) {
      fields.push_back({"", static_cast<field_type>(content[0])});
      names.push_back(shown_text(content.substr(1)));
    } else if (kind == mdb::message::rows) {
      rows = add_rows(content, fields.size(), table, rows, cells);
    }
  });
  if (fields.empty()) fail(tables_[table], "it has no fields.");
  names = distinct_names(std::move(names));
  for (std::size_t i = 0; i < fields.size(); ++i) fields[i].name = std::move(names[i]);
  cells.become_table(std::move(fields), rows);
}

} // namespace

std::unique_ptr<table_source> open_access(const fs::path& file) {
  return std::make_unique<access_source>(file);
}

} // namespace vesk
