#include "query/sources/workbooks/xls_source.h"

#include "platform/code_page.h"
#include "query/sources/bytes/byte_source.h"
#include "query/sources/workbooks/biff_records.h"
#include "query/sources/workbooks/compound_file.h"
#include "query/sources/workbooks/sheet_source.h"

#include <bit>
#include <cmath>
#include <map>

namespace vesk {

namespace {

class xls_source : public sheet_source {
public:
  explicit xls_source(std::unique_ptr<byte_source> bytes) : sheet_source(bytes->name()), bytes_(std::move(bytes)) {
    const std::size_t signature = compound_beginning.size();
    if (bytes_->size() >= signature && bytes_->text(0, signature) == compound_beginning) {
      const compound_file compound(*bytes_);
      if (compound.has("EncryptedPackage"))
        fail("", "the workbook is protected by a password; save a copy without it."); // contains an .xlsx
      inside_ = compound.stream({"Workbook", "Book"});
      if (!inside_) fail("", "the compound file contains no workbook.");
    }
    read_globals();
    refuse_without_sheets();
  }
  void let_go() override { bytes_->let_go(); }

protected:
  void read_sheet(std::size_t table, cell_table& cells) override;

private:
  void read_globals();
  void read_bound_sheet(biff_records& record);
  void read_shared_texts(biff_records& record);
  biff_texts texts_of(biff_records& record, std::size_t skipped) const {
    return {record, skipped, is_biff8_, *code_page_};
  }
  const byte_source& stream() const { return inside_ ? *inside_ : *bytes_; }

  const std::unique_ptr<byte_source> bytes_;
  std::unique_ptr<byte_source> inside_; // the workbook's stream in a compound file
  bool is_biff8_ = false;
  const code_page* code_page_ = nullptr;
  workbook_dates dates_;
  std::map<unsigned, bool> formats_; // by number: true for dates
  std::vector<bool> styles_;         // by number: true for dates
  std::vector<std::size_t> sheet_offsets_;

  friend class xls_sheet_reader;
};

unsigned code_page_of(std::uint16_t number) {
  constexpr std::uint16_t ascii = 367, mac = 0x8000, windows = 0x8001;
  if (number == mac) return 10000;
  return number == ascii || number == windows ? 1252 : number;
}

void xls_source::read_globals() {
  biff_records record(stream());
  if (!record.next() || record.id() != biff_bof) fail("", "not a workbook of a supported version.");
  const auto version = record.data().number<std::uint16_t>(0);
  if (version != 0x0600 && version != 0x0500) fail("", "workbooks older than Excel 5 are not supported.");
  is_biff8_ = version == 0x0600;
  code_page_ = code_page::find(1252);
  if (!code_page_) fail("", "this system does not support its code page.");

  constexpr std::size_t most_styles = 1 << 16; // the most that cells can refer to
  std::vector<std::uint16_t> style_formats;
  while (record.next() && record.id() != biff_eof) {
    const byte_view& data = record.data();
    switch (record.id()) {
    case biff_filepass: fail("", "the workbook is protected by a password; save a copy without it.");
    case biff_codepage:
      if (const code_page* const page = code_page::find(code_page_of(data.number<std::uint16_t>(0)))) code_page_ = page;
      break;
    case biff_datemode: dates_.from_1904 = data.number<std::uint16_t>(0) == 1; break;
    case biff_format: {
      const auto number = data.number<std::uint16_t>(0);
      formats_[number] = is_date_format(texts_of(record, 2).text(is_biff8_ ? 2 : 1));
      break;
    }
    case biff_xf:
      if (style_formats.size() < most_styles) style_formats.push_back(data.number<std::uint16_t>(2));
      break;
    case biff_boundsheet: read_bound_sheet(record); break;
    case biff_sst: read_shared_texts(record); break;
    default: break;
    }
  }
  for (const std::uint16_t format : style_formats) {
    const auto told = formats_.find(format);
    styles_.push_back(told == formats_.end() ? is_date_format(unsigned{format}) : told->second);
  }
}

void xls_source::read_bound_sheet(biff_records& record) {
  constexpr std::uint8_t worksheet = 0;
  if (record.data().number<std::uint8_t>(5) != worksheet) return;
  sheet_offsets_.push_back(record.data().number<std::uint32_t>(0));
  add_sheet(texts_of(record, 6).text(1));
}

void xls_source::read_shared_texts(biff_records& record) {
  const std::uint32_t count = record.data().number<std::uint32_t>(4);
  biff_texts texts = texts_of(record, 8);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string text = texts.text(2);
    if (texts.ended())
      fail("", "only " + std::to_string(i) + " of " + std::to_string(count) + " shared texts are present.");
    add_shared_text(text);
  }
}

// Reads the records of a sheet into cells.
class xls_sheet_reader {
public:
  xls_sheet_reader(xls_source& source, std::size_t table, cell_table& cells)
      : source_(source), table_(table), cells_(cells), record_(source.stream(), source.sheet_offsets_[table]) {}

  void read() {
    if (!record_.next() || record_.id() != biff_bof) source_.fail(source_.tables_[table_], "the sheet is missing.");
    for (int depth = 1; depth > 0;) {
      if (!record_.next()) source_.fail(source_.tables_[table_], "the sheet does not end.");
      if (record_.id() == biff_bof)
        ++depth; // a chart inside the sheet
      else if (record_.id() == biff_eof)
        --depth;
      else if (depth == 1)
        read_record();
    }
  }

private:
  void read_record() {
    const byte_view& data = record_.data();
    switch (record_.id()) {
    case biff_number: return number(column(), style(), data.number<double>(6));
    case biff_rk: return number(column(), style(), rk(data.number<std::uint32_t>(6)));
    case biff_mulrk:
      for (std::size_t at = 4, c = column(); at + 6 <= data.size(); at += 6, ++c)
        number(static_cast<std::uint32_t>(c), data.number<std::uint16_t>(at), rk(data.number<std::uint32_t>(at + 2)));
      return;
    case biff_labelsst: {
      const auto index = data.number<std::uint32_t>(6);
      if (index >= source_.shared_texts_.size())
        source_.fail(source_.tables_[table_], "text " + std::to_string(index) + " of a cell is missing.");
      return add(row(), column(), table_value::of_text(source_.shared_texts_[index]));
    }
    case biff_label:
    case biff_rstring: return text(row(), column(), 6);
    case biff_boolerr: return boolean_or_error(data.number<std::uint8_t>(7) != 0, data.number<std::uint8_t>(6));
    case biff_formula: return formula();
    case biff_string:
      if (formula_has_text_) text(formula_row_, formula_column_, 0);
      formula_has_text_ = false;
      return;
    default: return;
    }
  }

  std::uint32_t row() const { return record_.data().number<std::uint16_t>(0); }
  std::uint32_t column() const { return record_.data().number<std::uint16_t>(2); }
  std::uint16_t style() const { return record_.data().number<std::uint16_t>(4); }

  void add(std::uint32_t row, std::uint32_t column, const table_value& value) {
    if (!cells_.add(row, column, value)) source_.fail_too_large(table_);
  }
  void number(std::uint32_t column, std::uint16_t style, double value) {
    if (!std::isfinite(value)) return; // Excel has no such numbers
    const bool is_date = style < source_.styles_.size() && source_.styles_[style];
    add(row(), column,
        is_date ? table_value::of_date_time(source_.dates_.number(value)) : table_value::of_number(value));
  }
  void text(std::uint32_t row, std::uint32_t column, std::size_t skipped) {
    add(row, column, table_value::of_text(source_.keep_text_of_cell(source_.texts_of(record_, skipped).text(2))));
  }

  // A number in 30 bits: the upper part of a double, or an integer; either may be divided by 100.
  static double rk(std::uint32_t bits) {
    constexpr std::uint32_t is_hundredth = 1, is_integer = 2;
    const double value = bits & is_integer ? static_cast<std::int32_t>(bits) >> 2
                                           : std::bit_cast<double>(std::uint64_t{bits & 0xfffffffcU} << 32);
    return bits & is_hundredth ? value / 100 : value;
  }

  void boolean_or_error(bool is_error, std::uint8_t code) {
    if (!is_error) {
      if (!cells_.add_boolean(row(), column(), code != 0)) source_.fail_too_large(table_);
      return;
    }
    struct error {
      std::uint8_t code;
      const char* text;
    };
    static constexpr error errors[] = {{0x00, "#NULL!"}, {0x07, "#DIV/0!"}, {0x0f, "#VALUE!"}, {0x17, "#REF!"},
                                       {0x1d, "#NAME?"}, {0x24, "#NUM!"},   {0x2a, "#N/A"}};
    for (const error& e : errors)
      if (e.code == code) add(row(), column(), table_value::of_text(e.text));
  }

  // The result is a double, unless its last two bytes are FFFF; then the first one is its kind.
  void formula() {
    const byte_view& data = record_.data();
    formula_has_text_ = false;
    if (data.number<std::uint16_t>(12) != 0xffff) return number(column(), style(), data.number<double>(6));
    enum : std::uint8_t { text_follows = 0, boolean = 1, error = 2 };
    const auto kind = data.number<std::uint8_t>(6);
    if (kind == boolean || kind == error) return boolean_or_error(kind == error, data.number<std::uint8_t>(8));
    formula_has_text_ = kind == text_follows;
    formula_row_ = row();
    formula_column_ = column();
  }

  xls_source& source_;
  const std::size_t table_;
  cell_table& cells_;
  biff_records record_;
  bool formula_has_text_ = false;
  std::uint32_t formula_row_ = 0, formula_column_ = 0;
};

void xls_source::read_sheet(std::size_t table, cell_table& cells) {
  xls_sheet_reader(*this, table, cells).read();
  cells.become_sheet();
}

} // namespace

std::unique_ptr<table_source> open_xls(const std::filesystem::path& file) {
  return std::make_unique<xls_source>(open_bytes(file));
}

std::unique_ptr<table_source> open_xls(std::span<const std::byte> bytes, std::string name) {
  return std::make_unique<xls_source>(bytes_in_memory(bytes, std::move(name)));
}

} // namespace vesk
