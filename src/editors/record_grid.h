// A grid made of a list of records and a table of columns.
#pragma once

#include "charts/grid.h"
#include "dataset/shared_list.h"
#include "dataset/short_text.h"
#include "dataset/text_encoding.h"
#include "editors/editor_host.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vesk {

// Tool tip of descriptions, which come from the catalogue.
inline constexpr const char* description_tip = "Not kept: the catalogue's text returns when the file is opened again.";

// Converts between a record's value and a cell's, such as a reference and a combo's position.
template <class Record>
struct translated_member {
  std::function<double(const Record&)> read;
  std::function<void(Record&, double)> write;
};

// One column of a dialog's table: its header, its kind of cell, and the record member it shows.
template <class Record>
struct record_column {
  using member = std::variant<short_text Record::*, double Record::*, bool Record::*, std::uint32_t Record::*,
                              translated_member<Record>>;

  std::string header; // lines separated by '\n'
  cell_type type;
  member field;
  std::string format = {}; // of a number: the setting with its picture; empty: in `type`
  bool editable = true;
  bool typed_only = false;
  std::string tool_tip = {}; // the same for all rows
};

template <class Record, class List = shared_list<Record>>
class record_grid : public grid {
public:
  using record_type = Record;
  using list = List;
  using column = record_column<Record>;

  // `read` returns the list, null without one; `edit` the same list for changing. Both are called for each cell.
  record_grid(std::vector<column> rows, std::function<const list*()> read, std::function<list*()> edit)
      : rows_(std::move(rows)), read_(std::move(read)), edit_(std::move(edit)) {
    for (const column& row : rows_) columns_.push_back({row.header, row.type, row.editable, row.typed_only});
  }

  // Sets the pictures from the settings.
  void take_formats(const editor_host& host) {
    for (std::size_t i = 0; i < rows_.size(); ++i)
      if (!rows_[i].format.empty()) columns_[i].type.picture = host.number_format(rows_[i].format);
  }

  // Optional remarks on a record's cells.
  std::function<cell_mark(const Record&, std::size_t column)> mark_of;
  std::function<std::string(const Record&, std::size_t column)> tip_of;
  std::function<std::optional<cell_value>(const Record&, std::size_t column)> default_of;

  // These make rows free: the records added by Insert, and by Down and paste.
  std::function<Record()> make_inserted, make_appended;

  std::span<const grid_column> columns() const override { return columns_; }
  void set_items(std::size_t c, std::shared_ptr<const item_list> items) { columns_[c].type.items = std::move(items); }
  bool has_free_rows() const override { return make_inserted && read_(); }
  void insert_row(std::size_t row) override { edit_()->insert(row, make_inserted()); }
  void erase_rows(std::size_t first, std::size_t count) override { edit_()->erase(first, count); }
  void resize(std::size_t count) override { edit_()->resize(count, make_appended()); }
  std::size_t row_count() const override {
    const list* records = read_();
    return records ? records->size() : 0;
  }
  cell_value value(std::size_t row, std::size_t c) const override {
    const Record* record = find(row);
    if (!record) return {};
    return std::visit([&](const auto& field) { return read(*record, field); }, rows_[c].field);
  }
  void set_value(std::size_t row, std::size_t c, const cell_value& value) override {
    if (!find(row)) return;
    Record& record = edit_()->edit(row);
    std::visit([&](const auto& field) { write(record, field, value); }, rows_[c].field);
  }
  cell_mark mark(std::size_t row, std::size_t c) const override {
    const Record* record = find(row);
    if (!record) return {};
    const auto* number = std::get_if<double Record::*>(&rows_[c].field);
    if (number && !std::isfinite((*record).*(*number))) return {"The value is not a finite number."};
    return mark_of ? mark_of(*record, c) : cell_mark{};
  }
  std::string tool_tip(std::size_t row, std::size_t c) const override {
    const Record* record = find(row);
    const std::string own = record && tip_of ? tip_of(*record, c) : std::string();
    return own.empty() ? rows_[c].tool_tip : own;
  }
  std::optional<cell_value> default_value(std::size_t row, std::size_t c) const override {
    const Record* record = find(row);
    return record && default_of ? default_of(*record, c) : std::nullopt;
  }

private:
  const Record* find(std::size_t row) const {
    const list* records = read_();
    return records && row < records->size() ? &(*records)[row] : nullptr;
  }
  template <class Member>
  static cell_value read(const Record& record, Member Record::*field) {
    return as_value(record.*field);
  }
  static cell_value read(const Record& record, const translated_member<Record>& field) { return field.read(record); }
  template <class Member>
  static void write(Record& record, Member Record::*field, const cell_value& value) {
    assign(record.*field, value);
  }
  static void write(Record& record, const translated_member<Record>& field, const cell_value& value) {
    field.write(record, std::get<double>(value));
  }
  static cell_value as_value(const short_text& text) { return shown_text(text.str()); }
  static cell_value as_value(double number) { return number; }
  static cell_value as_value(bool flag) { return flag ? 1.0 : 0.0; }
  static cell_value as_value(std::uint32_t item) { return static_cast<double>(item); }
  static void assign(short_text& text, const cell_value& value) { text = std::get<std::string>(value); }
  static void assign(double& number, const cell_value& value) { number = std::get<double>(value); }
  static void assign(bool& flag, const cell_value& value) { flag = std::get<double>(value) != 0; }
  static void assign(std::uint32_t& item, const cell_value& value) {
    item = static_cast<std::uint32_t>(std::get<double>(value));
  }

  std::vector<column> rows_;
  std::function<const list*()> read_;
  std::function<list*()> edit_;
  std::vector<grid_column> columns_;
};

// A grid over a list that is a member of the data set.
template <class Record>
record_grid<Record> data_set_grid(editor_host& host, shared_list<Record> prevesk_dataset_data_type::*list,
                                  std::vector<record_column<Record>> columns) {
  return {
      std::move(columns),
      [&host, list]() -> const shared_list<Record>* { return host.data_set() ? &(host.data_set()->*list) : nullptr; },
      [&host, list]() -> shared_list<Record>* { return host.data_set() ? &(host.data_set()->*list) : nullptr; }};
}

} // namespace vesk
