#include "query/sources/workbooks/ods_source.h"

#include "query/sources/bytes/byte_source.h"
#include "query/sources/text/date_text.h"
#include "query/sources/text/number_text.h"
#include "query/sources/workbooks/sheet_source.h"
#include "query/sources/workbooks/xml_reader.h"

#include <algorithm>
#include <optional>

namespace vesk {

namespace {

constexpr std::uint32_t most_rows = 1 << 20; // of a sheet

// The days of a duration such as "PT13H05M30.5S". Nothing for other texts, and for durations in months or years.
std::optional<double> duration(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  if (!text.starts_with('P')) return std::nullopt;
  text.remove_prefix(1);
  double seconds = 0;
  bool in_time = false;
  while (!text.empty()) {
    if (text[0] == 'T') {
      in_time = true;
      text.remove_prefix(1);
      continue;
    }
    const std::size_t unit = text.find_first_not_of("0123456789.");
    if (unit == text.npos) return std::nullopt;
    const auto number = plain_number(text.substr(0, unit));
    const double length = text[unit] == 'D'              ? 86400
                          : text[unit] == 'H' && in_time ? 3600
                          : text[unit] == 'M' && in_time ? 60
                          : text[unit] == 'S' && in_time ? 1
                                                         : 0;
    if (!number || length == 0) return std::nullopt;
    seconds += *number * length;
    text.remove_prefix(unit + 1);
  }
  return to_milliseconds((negative ? -seconds : seconds) / 86400);
}

class ods_source : public sheet_source {
public:
  explicit ods_source(const byte_source& bytes);

protected:
  void read_sheet(std::size_t table, cell_table& cells) override {
    cells = std::move(contents_[table]);
    cells.become_sheet();
  }

private:
  friend class ods_content_reader;

  std::vector<cell_table> contents_; // of the sheets, before they are first requested
};

class ods_content_reader : public xml_reader {
public:
  explicit ods_content_reader(ods_source& source) : source_(source) {}

protected:
  void start(std::string_view name, const xml_attributes& attributes) override {
    if (name == "table") {
      if (table_depth_++ == 0) start_sheet(attributes["name"]);
    } else if (table_depth_ == 1) { // only in a sheet, not in a table inside a cell
      start_in_sheet(name, attributes);
    }
  }

  void end(std::string_view name) override {
    if (name == "table") {
      --table_depth_;
    } else if (table_depth_ != 1) {
      return;
    } else if (name == "annotation") {
      in_annotation_ = false;
    } else if (name == "p" && !in_annotation_) {
      --in_paragraph_;
    } else if (name == "table-cell" || name == "covered-table-cell") {
      end_cell();
    } else if (name == "table-row") {
      end_row();
    }
  }

  void text(std::string_view piece) override {
    if (table_depth_ == 1 && in_paragraph_ > 0 && !in_annotation_) source_.append(text_, piece);
  }

private:
  struct cell {
    std::uint32_t column;
    table_value value;
    bool is_boolean;
  };

  void start_in_sheet(std::string_view name, const xml_attributes& attributes) {
    if (name == "annotation") {
      in_annotation_ = true;
    } else if (name == "table-row") {
      row_repeated_ = std::max(1U, attributes.number("number-rows-repeated", 1));
      column_ = 0;
      row_cells_.clear();
    } else if (name == "table-cell" || name == "covered-table-cell") {
      start_cell(attributes);
    } else if (!in_annotation_) {
      start_in_cell(name, attributes);
    }
  }

  void start_in_cell(std::string_view name, const xml_attributes& attributes) {
    if (name == "p") {
      if (paragraphs_++ > 0) source_.append(text_, "\n");
      ++in_paragraph_;
    } else if (name == "s") {
      source_.append(text_, std::string(std::min(attributes.number("c", 1), 1000U), ' '));
    } else if (name == "tab" || name == "line-break") {
      source_.append(text_, name == "tab" ? "\t" : "\n");
    }
  }

  void start_sheet(std::string_view name) {
    source_.add_sheet(std::string(name));
    source_.contents_.emplace_back();
    row_ = 0;
  }

  void start_cell(const xml_attributes& attributes) {
    cell_repeated_ = std::max(1U, attributes.number("number-columns-repeated", 1));
    type_ = attributes["value-type"];
    value_ = type_ == "date"      ? attributes["date-value"]
             : type_ == "time"    ? attributes["time-value"]
             : type_ == "boolean" ? attributes["boolean-value"]
             : type_ == "string"  ? attributes["string-value"]
                                  : attributes["value"];
    text_.clear();
    paragraphs_ = 0;
    in_paragraph_ = 0;
  }

  table_value cell_value() {
    if (type_ == "date") {
      const auto date = read_date(value_, date_form::iso);
      return date ? table_value::of_date_time(to_milliseconds(date->serial)) : table_value();
    }
    if (type_ == "time") {
      const auto time = duration(value_);
      return time ? table_value::of_date_time(*time) : table_value();
    }
    if (type_ == "boolean") return table_value::of_integer(value_ == "true");
    if (type_ == "string" || type_.empty()) {
      const std::string& shown = value_.empty() ? text_ : value_;
      return shown.empty() ? table_value() : table_value::of_text(source_.keep_text_of_cell(shown));
    }
    const auto number = plain_number(value_); // float, percentage, currency
    return number ? table_value::of_number(*number) : table_value();
  }

  void end_cell() {
    const table_value value = cell_value();
    const std::uint32_t end = column_ + std::min(cell_repeated_, cell_table::most_columns);
    if (!value.is_null())
      for (std::uint32_t c = column_; c < std::min(end, cell_table::most_columns); ++c)
        row_cells_.push_back({c, value, type_ == "boolean"});
    column_ = std::min(end, cell_table::most_columns);
  }

  void end_row() {
    const std::uint32_t end = row_ + std::min(row_repeated_, most_rows);
    for (; row_ < std::min(end, most_rows) && !row_cells_.empty(); ++row_)
      for (const cell& c : row_cells_) {
        cell_table& cells = source_.contents_.back();
        if (++cells_ > cell_table::most_cells ||
            !(c.is_boolean ? cells.add_boolean(row_, c.column, c.value.integer() != 0)
                           : cells.add(row_, c.column, c.value)))
          source_.fail_too_large(source_.tables_.size() - 1);
      }
    row_ = std::min(end, most_rows);
  }

  ods_source& source_;
  int table_depth_ = 0, in_paragraph_ = 0, paragraphs_ = 0;
  bool in_annotation_ = false;
  std::uint32_t row_ = 0, column_ = 0, row_repeated_ = 1, cell_repeated_ = 1;
  std::string type_, value_, text_;
  std::vector<cell> row_cells_;
  std::size_t cells_ = 0; // of all sheets, since all are kept in memory
};

// Checks whether parts of the archive are encrypted.
class manifest_reader : public xml_reader {
public:
  bool is_encrypted = false;

protected:
  void start(std::string_view name, const xml_attributes&) override { is_encrypted |= name == "encryption-data"; }
};

ods_source::ods_source(const byte_source& bytes) : sheet_source(bytes.name()) {
  const zip_archive archive(bytes);
  if (const std::string manifest = "META-INF/manifest.xml"; archive.has(manifest)) {
    manifest_reader reader;
    reader.read(archive, manifest);
    if (reader.is_encrypted) fail("", "the workbook is protected by a password; save a copy without it.");
  }
  ods_content_reader(*this).read(archive, "content.xml");
  refuse_without_sheets();
}

} // namespace

std::unique_ptr<table_source> open_ods(const std::filesystem::path& file) {
  return std::make_unique<ods_source>(*open_bytes(file));
}

std::unique_ptr<table_source> open_ods(std::span<const std::byte> bytes, std::string name) {
  return std::make_unique<ods_source>(*bytes_in_memory(bytes, std::move(name)));
}

} // namespace vesk
