#include "query/sources/csv_source.h"

#include "dataset/text_encoding.h"
#include "platform/code_page.h"
#include "query/sources/column_form.h"
#include "query/sources/csv_rows.h"
#include "query/sources/header_row.h"
#include "query/sources/source_bytes.h"

#include <algorithm>
#include <map>

namespace vesk {

namespace {

constexpr std::size_t sample_size = std::size_t{256} << 10; // bytes that tell the separator and the header
constexpr std::size_t sample_rows = 200;

// How well a separator explains the sample: how many rows have the most frequent number of fields, if that is not 1.
std::size_t rows_explained(std::string_view sample, char separator) {
  std::map<std::size_t, std::size_t> rows_by_size;
  csv_rows rows(sample, separator);
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
  csv_source(source_bytes bytes, std::string name) : table_source(std::move(name)), bytes_(std::move(bytes)) {
    tables_ = {file()};
    find_text();
    separator_ = separator_of(text_.substr(0, sample_size));
    find_columns();
  }

  const std::vector<table_field>& fields(std::size_t) override { return fields_; }
  std::unique_ptr<row_cursor> rows(std::size_t, std::vector<row_filter> filters) override;

private:
  friend class csv_cursor;

  void find_text();
  void find_columns();
  std::size_t line_of(std::size_t offset) const;

  source_bytes bytes_;
  std::string converted_; // of a file in UTF-16
  std::string_view text_; // without a byte-order mark; from `find_columns` on from the first row of the table on
  std::size_t comment_lines_ = 0; // above text_
  char separator_ = ',';
  std::vector<table_field> fields_;
  std::vector<column_form> forms_;
};

void csv_source::find_text() {
  text_ = {reinterpret_cast<const char*>(bytes_.get().data()), bytes_.get().size()};
  if (text_.starts_with("\xef\xbb\xbf")) {
    text_.remove_prefix(3);
  } else if (text_.starts_with("\xff\xfe") || text_.starts_with("\xfe\xff")) {
    const code_page* const utf_16 = code_page::find(text_[0] == '\xff' ? 1200 : 1201);
    if (!utf_16) throw table_source_exception(file(), "", "", "the system does not know UTF-16.");
    converted_ = utf_16->utf8(text_.substr(2));
    text_ = converted_;
  }
  if (text_.substr(0, sample_size).find('\0') != text_.npos)
    throw table_source_exception(file(), "", "", "it is no text file: it holds bytes of value 0.");
  while (text_.starts_with('#')) { // comments, as agencies put them above their tables
    text_.remove_prefix(std::min(text_.find('\n'), text_.size() - 1) + 1);
    ++comment_lines_;
  }
  if (text_.find_first_not_of(" \t\r\n") == text_.npos)
    throw table_source_exception(file(), "", "", "the file is empty.");
}

void csv_source::find_columns() {
  std::vector<sample_row> sample;
  std::vector<std::size_t> offsets;
  std::string room;
  csv_rows first_rows(text_, separator_);
  while (sample.size() < sample_rows && first_rows.next()) {
    sample_row& row = sample.emplace_back();
    for (std::size_t i = 0; i < first_rows.size(); ++i) {
      row.texts.push_back(shown_text(first_rows.text(i, room)));
      column_votes value;
      value.add(row.texts.back());
      row.values += value.settle().type != field_type::string;
    }
    offsets.push_back(first_rows.offset());
  }
  header found = find_header(sample);
  const std::size_t line = line_of(offsets[found.row]);
  text_.remove_prefix(offsets[found.row]);

  csv_rows rows(text_, separator_);
  if (found.has_names) rows.next();
  std::vector<column_votes> votes(found.names.size());
  std::size_t data = text_.size();
  while (rows.next()) {
    data = std::min(data, rows.offset());
    if (rows.size() > votes.size()) votes.resize(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) votes[i].add(rows.text(i, room));
  }
  if (rows.unclosed() != text_.npos)
    throw table_source_exception(file(), "", "",
                                 "the quotation mark in line " +
                                     std::to_string(line + line_of(rows.unclosed()) - 1 - comment_lines_) +
                                     " is never closed.");
  text_.remove_prefix(data);
  found.names.resize(votes.size());
  found.names = distinct_names(std::move(found.names));
  for (std::size_t i = 0; i < votes.size(); ++i) {
    forms_.push_back(votes[i].settle(separator_ != ','));
    fields_.push_back({found.names[i], forms_[i].type});
  }
}

// Counted from 1; of an offset in `text_`.
std::size_t csv_source::line_of(std::size_t offset) const {
  return 1 + comment_lines_ + static_cast<std::size_t>(std::count(text_.data(), text_.data() + offset, '\n'));
}

class csv_cursor : public row_cursor {
public:
  csv_cursor(const csv_source& source, std::vector<row_filter> filters)
      : row_cursor(std::move(filters)), source_(source), rows_(source.text_, source.separator_),
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
  bool advance() override { return rows_.next(); }

private:
  const csv_source& source_;
  csv_rows rows_;
  std::vector<std::string> texts_; // of the present row, by field, where the file's bytes cannot serve
};

std::unique_ptr<row_cursor> csv_source::rows(std::size_t, std::vector<row_filter> filters) {
  return std::make_unique<csv_cursor>(*this, std::move(filters));
}

} // namespace

std::unique_ptr<table_source> open_csv(const std::filesystem::path& file) {
  return std::make_unique<csv_source>(source_bytes::of_file(file), file.string());
}

std::unique_ptr<table_source> open_csv(std::span<const std::byte> bytes, std::string name) {
  return std::make_unique<csv_source>(bytes, std::move(name));
}

} // namespace vesk
