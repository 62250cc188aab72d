#include "query/sources/text/csv_source.h"

#include "dataset/text_encoding.h"
#include "platform/code_page.h"
#include "query/sources/bytes/byte_source.h"
#include "query/sources/text/column_form.h"
#include "query/sources/text/csv_rows.h"
#include "query/sources/text/header_row.h"
#include "query/sources/text/text_stream.h"

#include <algorithm>
#include <map>
#include <optional>

namespace vesk {

namespace {

constexpr std::size_t sample_size = byte_window::usual_size; // bytes used to find the separator and the header
constexpr std::size_t sample_rows = 200;

// How well a separator fits the sample: the number of rows with the most frequent number of fields, if that is not 1.
std::size_t rows_explained(std::string_view sample, char separator) {
  std::map<std::size_t, std::size_t> rows_by_size;
  csv_rows rows(text_stream(sample), separator);
  for (std::size_t n = 0; n < sample_rows && rows.next(); ++n) ++rows_by_size[rows.size()];
  std::size_t most = 0;
  for (const auto& [size, count] : rows_by_size)
    if (size > 1) most = std::max(most, count);
  return most;
}

char separator_of(std::string_view sample) {
  char best = ',';
  std::size_t most = 0;
  for (const char separator : {'\t', ';', ',', '|'})
    if (const std::size_t rows = rows_explained(sample, separator); rows > most) {
      best = separator;
      most = rows;
    }
  return best;
}

class csv_source : public table_source {
public:
  explicit csv_source(std::unique_ptr<byte_source> bytes) : table_source(bytes->name()), bytes_(std::move(bytes)) {
    tables_ = {file()};
    find_text();
    {
      const text_stream text(*bytes_, start_);
      const std::string_view there(text.begin(), static_cast<std::size_t>(text.end() - text.begin()));
      if (there.substr(0, sample_size).find('\0') != there.npos)
        throw table_source_exception(file(), "", "", "not a text file: it contains bytes of value 0.");
      separator_ = separator_of(there.substr(0, sample_size));
    }
    find_columns();
  }

  const std::vector<table_field>& fields(std::size_t) override { return fields_; }
  std::unique_ptr<row_cursor> rows(std::size_t, std::vector<row_filter> filters) override;

private:
  friend class csv_cursor;

  void find_text();
  void find_columns();
  csv_rows rows_from(std::uint64_t offset) const { return {text_stream(*bytes_, offset), separator_, offset}; }
  std::uint64_t line_of(std::uint64_t offset) const;
  void refuse_fault(const csv_rows& rows) const; // if there is one

  const std::unique_ptr<byte_source> bytes_;
  std::uint64_t start_ = 0; // in the text, after comments; after `find_columns` of the first row of values
  char separator_ = ',';
  std::vector<table_field> fields_;
  std::vector<column_form> forms_;
};

// Removes the apostrophe that protects a name in results from being treated as a formula by spreadsheets.
std::string without_apostrophe(std::string name) {
  const bool marked =
      name.size() > 1 && name[0] == '\'' && std::string_view("=+-@\t\r").find(name[1]) != std::string_view::npos;
  return marked ? name.substr(1) : name;
}

bool ends_line(char c) {
  return c == '\n' || c == '\r';
}

// Skips comments, which agencies put above their tables.
void csv_source::find_text() {
  text_stream text(*bytes_, 0);
  const char* at = text.begin();
  const auto read_on = [&](const char* keep) {
    start_ += static_cast<std::uint64_t>(keep - text.begin());
    text.read_on(keep);
    at = text.begin();
  };
  while (true) {
    while (at != text.end() && ends_line(*at)) ++at;
    if (at == text.end() && !text.is_complete()) {
      read_on(at);
      continue;
    }
    if (at == text.end() || *at != '#') break;
    while (at != text.end() || !text.is_complete()) {
      at = std::find_if(at, text.end(), ends_line);
      if (at != text.end()) break;
      if (!text.is_complete()) read_on(at);
    }
  }
  start_ += static_cast<std::uint64_t>(at - text.begin());
  const auto is_blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while ((at = std::find_if_not(at, text.end(), is_blank)) == text.end()) {
    if (text.is_complete()) throw table_source_exception(file(), "", "", "the file is empty.");
    text.read_on(at);
    at = text.begin();
  }
}

void csv_source::find_columns() {
  header_sample sample;
  std::vector<std::uint64_t> offsets;
  std::string room;
  {
    csv_rows first_rows = rows_from(start_);
    while (!sample.is_full() && first_rows.next()) {
      sample.begin_row();
      for (std::size_t i = 0; i < first_rows.size(); ++i) {
        const std::string text = without_apostrophe(shown_text(first_rows.text(i, room)));
        column_votes value;
        value.add(text);
        sample.add(i, text, value.settle().type != field_type::string);
      }
      offsets.push_back(first_rows.offset());
    }
    if (sample.rows().empty()) refuse_fault(first_rows);
  }
  header found = find_header(sample.rows());
  csv_rows rows = rows_from(offsets[found.row]);
  for (std::size_t i = 0; i < found.rows; ++i) rows.next();
  std::vector<column_votes> votes(found.names.size());
  std::optional<std::uint64_t> first;
  while (rows.next()) {
    if (!first) first = rows.offset();
    if (rows.size() > votes.size()) votes.resize(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) votes[i].add(rows.text(i, room));
  }
  refuse_fault(rows);
  start_ = first.value_or(rows.end_offset());
  found.names.resize(votes.size());
  found.names = distinct_names(std::move(found.names));
  for (std::size_t i = 0; i < votes.size(); ++i) {
    forms_.push_back(votes[i].settle(separator_ != ','));
    fields_.push_back({found.names[i], forms_[i].type});
  }
}

void csv_source::refuse_fault(const csv_rows& rows) const {
  using enum csv_rows::fault_kind;
  if (rows.fault() == none) return;
  const std::string line = std::to_string(line_of(rows.fault_offset()));
  const std::string longest = std::to_string(csv_rows::longest_row) + " bytes";
  throw table_source_exception(
      file(), "", "",
      rows.fault() == long_row
          ? "the row that begins in line " + line + " is longer than " + longest + "."
          : "the quotation mark in line " + line +
                (rows.fault() == unclosed_mark ? " is never closed." : " is not closed within " + longest + "."));
}

// Counted from 1.
std::uint64_t csv_source::line_of(std::uint64_t offset) const {
  std::uint64_t line = 1;
  char before = '\0';
  for (text_stream text(*bytes_, 0);; text.read_on(text.end())) {
    const auto there = static_cast<std::uint64_t>(text.end() - text.begin());
    for (const char* at = text.begin(); at != text.begin() + std::min(there, offset); before = *at++)
      line += ends_line(*at) && !(*at == '\n' && before == '\r');
    offset -= std::min(there, offset);
    if (offset == 0 || text.is_complete()) return line;
  }
}

class csv_cursor : public row_cursor {
public:
  csv_cursor(const csv_source& source, std::vector<row_filter> filters)
      : row_cursor(std::move(filters)), source_(source), rows_(source.rows_from(source.start_)),
        texts_(source.fields_.size()) {}

  table_value value(std::size_t field) override {
    if (field >= rows_.size()) return {};
    std::string& room = texts_[field];
    const std::string_view text = rows_.text(field, room);
    const column_form& form = source_.forms_[field];
    const table_value value = form.read(text);
    if (value.kind() != value_kind::text || is_ascii(text) || is_utf8(text)) return value;
    room = utf8_from_windows_1252(text);
    return table_value::of_text(room);
  }

protected:
  bool advance() override {
    if (rows_.next()) return true;
    source_.refuse_fault(rows_); // if the file has changed
    return false;
  }

private:
  const csv_source& source_;
  csv_rows rows_;
  std::vector<std::string> texts_; // of the current row, by field, for values that need conversion
};

std::unique_ptr<row_cursor> csv_source::rows(std::size_t, std::vector<row_filter> filters) {
  return std::make_unique<csv_cursor>(*this, std::move(filters));
}

} // namespace

std::unique_ptr<table_source> open_csv(const std::filesystem::path& file) {
  return std::make_unique<csv_source>(open_bytes(file));
}

std::unique_ptr<table_source> open_csv(std::span<const std::byte> bytes, std::string name, bool in_pieces) {
  return std::make_unique<csv_source>(bytes_in_memory(bytes, std::move(name), in_pieces));
}

} // namespace vesk
