#include "query/sources/databases/dbf_source.h"

#include "platform/code_page.h"
#include "platform/little_endian.h"
#include "query/sources/bytes/byte_source.h"
#include "query/sources/bytes/byte_view.h"
#include "query/sources/databases/dbf_memo.h"
#include "query/sources/text/date_text.h"
#include "query/sources/text/number_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr unsigned utf_8 = 65001;
constexpr std::int32_t julian_origin = 2415019; // the Julian day number of 30 December 1899

// The code page for the language byte in the header; 1252 if it is 0 or not listed.
unsigned code_page_number(std::uint8_t language) {
  struct row {
    std::uint8_t language;
    std::uint16_t code_page;
  };
  static constexpr row rows[] = {
      {0x01, 437},  {0x02, 850},  {0x04, 10000}, {0x08, 865},   {0x09, 437}, {0x0a, 850}, {0x0b, 437},  {0x0d, 437},
      {0x0e, 850},  {0x0f, 437},  {0x10, 850},   {0x11, 437},   {0x12, 850}, {0x13, 932}, {0x14, 850},  {0x15, 437},
      {0x16, 850},  {0x17, 865},  {0x18, 437},   {0x19, 437},   {0x1a, 850}, {0x1b, 437}, {0x1c, 863},  {0x1d, 850},
      {0x1f, 852},  {0x22, 852},  {0x23, 852},   {0x24, 860},   {0x25, 850}, {0x26, 866}, {0x37, 850},  {0x40, 852},
      {0x4d, 936},  {0x4e, 949},  {0x4f, 950},   {0x50, 874},   {0x64, 852}, {0x65, 866}, {0x66, 865},  {0x67, 861},
      {0x69, 620},  {0x6a, 737},  {0x6b, 857},   {0x6c, 863},   {0x78, 950}, {0x79, 949}, {0x7a, 936},  {0x7b, 932},
      {0x7c, 874},  {0x7d, 1255}, {0x7e, 1256},  {0x86, 737},   {0x87, 852}, {0x88, 857}, {0xc8, 1250}, {0xc9, 1251},
      {0xca, 1254}, {0xcb, 1253}, {0xcc, 1257},  {0xf0, 65001},
  };
  for (const row& r : rows)
    if (r.language == language) return r.code_page;
  return 1252;
}

// The code page named in a .cpg file, such as "UTF-8", "1252", "ANSI 1252" or "ISO 8859-15"; 0 if unknown.
unsigned code_page_number(std::string_view name) {
  std::string letters;
  unsigned number = 0;
  for (const char c : name) {
    if (c >= '0' && c <= '9' && number < 100'000)
      number = number * 10 + static_cast<unsigned>(c - '0');
    else if ((c | 0x20) >= 'a' && (c | 0x20) <= 'z')
      letters += static_cast<char>(c | 0x20);
  }
  if (letters == "utf") return number == 8 ? utf_8 : 0;
  constexpr unsigned iso_8859 = 28590;
  if (letters == "iso" || (number >= 88591 && number <= 885916)) {
    const std::string digits = std::to_string(number);
    return digits.starts_with("8859") ? iso_8859 + static_cast<unsigned>(std::atoi(digits.c_str() + 4)) : 0;
  }
  for (const auto& [word, page] :
       {std::pair("big", 950U), {"gbk", 936U}, {"gb", 936U}, {"shiftjis", 932U}, {"sjis", 932U}})
    if (letters == word) return page;
  return number;
}

// Removes a UTF-8 character that was cut at the end of its field.
std::string_view without_cut_character(std::string_view text) {
  for (std::size_t back = 1; back <= std::min<std::size_t>(3, text.size()); ++back) {
    const auto byte = static_cast<unsigned char>(text[text.size() - back]);
    if ((byte & 0xc0) == 0x80) continue;
    const std::size_t size = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : byte >= 0xc0 ? 2 : 1;
    return size > back ? text.substr(0, text.size() - back) : text;
  }
  return text;
}

std::string_view without_end_blanks(std::string_view text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
  return text;
}

std::string_view trimmed(std::string_view text) {
  text = without_end_blanks(text);
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return text;
}

// Texts that programs write for a missing number: "****" for one too long, "nan", "1.#IND" and the like.
bool means_no_number(std::string_view text) {
  return text.front() == '*' || text == "-" || text == "." || text == "?" || text.find_first_of("nN#") != text.npos;
}

struct dbf_field {
  char code;             // the type's letter in the file
  std::uint8_t decimals; // of a number in digits
  std::size_t offset;    // in the record
  std::size_t size;      // in bytes
  bool foxpro_binary;    // a memo's block is a binary number, not digits
  // Bit numbers in the null flags of Visual FoxPro, -1 for none: the field is null; the text is shorter than its field.
  std::int32_t null_bit, length_bit;
};

class dbf_source : public table_source {
public:
  dbf_source(std::unique_ptr<byte_source> table, std::unique_ptr<byte_source> memo, std::string_view encoding)
      : table_source(table->name()), table_(std::move(table)), memo_bytes_(std::move(memo)),
        code_page_(code_page::find(code_page_number(encoding))) {
    tables_ = {file()};
    read_header();
    if (!memo_bytes_) return;
    memo_.emplace(*memo_bytes_, memo_kind());
    companions_ = {memo_bytes_->name()};
  }
  void add_companion(const std::string& other) { companions_.push_back(other); }

  const std::vector<table_field>& fields(std::size_t) override { return fields_; }
  std::unique_ptr<row_cursor> rows(std::size_t, std::vector<row_filter> filters) override;

private:
  friend class dbf_cursor;

  bool is_level_7() const { return (version_ & 7) == 4; }
  bool is_foxpro() const { return (version_ & 0xf0) == 0x30 || version_ == 0xf5 || version_ == 0xfb; }
  dbf_memo_kind memo_kind() const {
    if (is_foxpro()) return dbf_memo_kind::foxpro;
    return version_ == 0x83 ? dbf_memo_kind::dbase_3 : dbf_memo_kind::dbase_4;
  }

  void read_header();
  void read_fields(const byte_view& header);
  void add_field(const dbf_field& layout, std::string name);
  field_type type_of(const dbf_field& layout) const;

  const std::unique_ptr<byte_source> table_, memo_bytes_; // the memo file may be missing
  const code_page* code_page_;
  std::uint8_t version_ = 0;
  std::size_t record_size_ = 0, first_record_ = 0;
  std::uint64_t record_count_ = 0;
  std::optional<dbf_field> null_flags_;
  std::int32_t flags_used_ = 0;
  std::vector<dbf_field> layout_;
  std::vector<table_field> fields_;
  std::optional<dbf_memo> memo_;
};

void dbf_source::read_header() {
  constexpr std::size_t longest_header = 0xffff;
  const std::string beginning =
      table_->text(0, static_cast<std::size_t>(std::min<std::uint64_t>(longest_header, table_->size())));
  const byte_view header(std::as_bytes(std::span(beginning)), file());
  if (header.size() < 33) throw table_source_exception(file(), "", "", "the file is too short for a dBASE table.");
  version_ = header.number<std::uint8_t>(0);
  if (is_level_7() ? header.size() < 70 : (version_ & 7) != 3 && !is_foxpro() && (version_ & 7) != 2)
    throw table_source_exception(file(), "", "",
                                 "not a dBASE table: unknown first byte " + std::to_string(version_) + ".");
  if (header.number<std::uint8_t>(15) == 1) throw table_source_exception(file(), "", "", "the table is encrypted.");
  first_record_ = header.number<std::uint16_t>(8);
  record_size_ = header.number<std::uint16_t>(10);
  if (!code_page_) code_page_ = code_page::find(code_page_number(header.number<std::uint8_t>(29)));
  if (!code_page_) code_page_ = code_page::find(1252);
  if (!code_page_) throw table_source_exception(file(), "", "", "this system does not support its code page.");
  if (first_record_ < 33 || first_record_ > table_->size() || record_size_ < 2)
    throw table_source_exception(file(), "", "",
                                 "the header is damaged: records of " + std::to_string(record_size_) +
                                     " bytes from byte " + std::to_string(first_record_) + " on, in a file of " +
                                     std::to_string(table_->size()) + " bytes.");
  read_fields(header.part(0, first_record_));
  const std::uint64_t held = (table_->size() - first_record_) / record_size_;
  const std::uint64_t told = header.number<std::uint32_t>(4);
  if (told > held)
    throw table_source_exception(file(), "", "",
                                 "the header claims " + std::to_string(told) + " records, but the file holds only " +
                                     std::to_string(held) + ".");
  record_count_ = told;
}

void dbf_source::read_fields(const byte_view& header) {
  const std::size_t row_size = is_level_7() ? 48 : 32;
  const std::size_t name_size = is_level_7() ? 32 : 11;
  std::size_t offset = 1; // after the mark of deleted records
  for (std::size_t at = is_level_7() ? 68 : 32; at + row_size <= header.size(); at += row_size) {
    const std::string_view row = header.text(at, row_size);
    if (row[0] == '\x0d' || row[0] == '\0') break;
    std::string_view name = row.substr(0, name_size);
    name = without_end_blanks(name.substr(0, name.find('\0')));
    dbf_field field{.code = row[name_size],
                    .decimals = static_cast<std::uint8_t>(row[name_size + (is_level_7() ? 2 : 6)]),
                    .offset = offset,
                    .size = static_cast<std::uint8_t>(row[name_size + (is_level_7() ? 1 : 5)]),
                    .foxpro_binary = false,
                    .null_bit = -1,
                    .length_bit = -1};
    if (field.code == 'C' && !is_level_7()) { // long texts store the upper byte of their size as decimals
      field.size |= static_cast<std::size_t>(field.decimals) << 8;
      field.decimals = 0;
    }
    offset += field.size;
    if (offset > record_size_)
      throw table_source_exception(file(), "", code_page_->utf8(name),
                                   "it ends at byte " + std::to_string(offset) + " of a record of " +
                                       std::to_string(record_size_) + " bytes.");
    if (is_foxpro()) {
      constexpr std::uint8_t may_be_null = 2;
      if (field.code == 'V' || field.code == 'Q') field.length_bit = flags_used_++;
      if (static_cast<std::uint8_t>(row[18]) & may_be_null) field.null_bit = flags_used_++;
    }
    if (field.code == '0') // the null flags themselves
      null_flags_ = field;
    else
      add_field(field, code_page_->utf8(name));
  }
  if (layout_.empty()) throw table_source_exception(file(), "", "", "the header lists no fields.");
  std::vector<std::string> names;
  for (const table_field& field : fields_) names.push_back(field.name);
  names = distinct_names(std::move(names));
  for (std::size_t i = 0; i < names.size(); ++i) fields_[i].name = std::move(names[i]);
}

void dbf_source::add_field(const dbf_field& layout, std::string name) {
  struct fixed_size {
    char code;
    std::size_t size;
  };
  // Level 7 uses 'O' for a double, and 'B' for the block of a binary memo; in Visual FoxPro 'B' is a double.
  static constexpr fixed_size sizes[] = {{'I', 4}, {'Y', 8}, {'T', 8}, {'@', 8}, {'+', 4}, {'O', 8}, {'D', 8}};
  for (const fixed_size& f : sizes)
    if (layout.code == f.code && layout.size != f.size)
      throw table_source_exception(file(), "", name,
                                   "a field of type " + std::string(1, layout.code) + " has " +
                                       std::to_string(layout.size) + " bytes instead of " + std::to_string(f.size) +
                                       ".");
  layout_.push_back(layout);
  layout_.back().foxpro_binary = layout.size == 4;
  fields_.push_back({std::move(name), type_of(layout)});
}

field_type dbf_source::type_of(const dbf_field& layout) const {
  switch (layout.code) {
  case 'C':
  case 'V': return field_type::string;
  case 'N':
  case 'F':
    if (layout.decimals != 0 || layout.code == 'F' || layout.size > 9) return field_type::floating;
    return layout.size <= 4 ? field_type::small_integer : field_type::integer;
  case 'B': return is_foxpro() && layout.size == 8 ? field_type::floating : field_type::blob;
  case 'O': return field_type::floating;
  case 'I': return field_type::integer;
  case '+': return field_type::auto_increment;
  case 'Y': return field_type::currency;
  case 'L': return field_type::boolean;
  case 'D': return field_type::date;
  case 'T':
  case '@': return field_type::date_time;
  case 'M': return field_type::memo;
  case 'Q': return field_type::bytes;
  default: return field_type::blob;
  }
}

class dbf_cursor : public row_cursor {
public:
  dbf_cursor(const dbf_source& source, std::vector<row_filter> filters)
      : row_cursor(std::move(filters)), source_(source), window_(*source.table_), texts_(source.layout_.size()) {}

  table_value value(std::size_t field) override;

protected:
  bool advance() override {
    do {
      if (next_ == end_ && !read_on()) return false;
      record_ = next_;
      next_ += source_.record_size_;
    } while (*record_ == '*');
    return true;
  }

private:
  bool read_on();
  table_value text(std::size_t field, std::string_view bytes);
  table_value digits(std::size_t field, std::string_view bytes) const;
  table_value date(std::size_t field, std::string_view bytes) const;
  table_value memo(std::size_t field, std::string_view bytes);
  bool has_flag(std::int32_t bit) const;
  [[noreturn]] void fail(std::size_t field, std::string_view bytes, const char* expected) const;

  const dbf_source& source_;
  byte_window window_;
  std::vector<std::string> texts_; // of the current row, by field, for values that need conversion
  std::uint64_t read_ = 0;         // records in the window or before it
  const char* next_ = nullptr;
  const char* end_ = nullptr;
  const char* record_ = nullptr;
};

// Reads whole records, as many as fit in the window.
bool dbf_cursor::read_on() {
  const std::size_t size = source_.record_size_;
  const std::uint64_t count = std::min<std::uint64_t>(source_.record_count_ - read_, byte_window::usual_size / size);
  if (count == 0) return false;
  const std::string_view records =
      window_.at(source_.first_record_ + read_ * size, static_cast<std::size_t>(count) * size);
  read_ += count;
  next_ = records.data();
  end_ = next_ + records.size();
  return true;
}

table_value dbf_cursor::value(std::size_t field) {
  const dbf_field& layout = source_.layout_[field];
  std::string_view bytes(record_ + layout.offset, layout.size);
  if (bytes.empty() || has_flag(layout.null_bit)) return {};
  switch (layout.code) {
  case 'V':
    if (has_flag(layout.length_bit)) bytes = bytes.substr(0, static_cast<std::uint8_t>(bytes.back()));
    [[fallthrough]];
  case 'C': return text(field, without_end_blanks(bytes));
  case 'N':
  case 'F': return digits(field, trimmed(bytes));
  case 'D': return date(field, bytes);
  case 'L':
    if (std::string_view("TtYy1").find(bytes[0]) != std::string_view::npos) return table_value::of_integer(1);
    if (std::string_view("FfNn0").find(bytes[0]) != std::string_view::npos) return table_value::of_integer(0);
    return {};
  case 'I': return table_value::of_integer(little_endian<std::int32_t>(bytes.data()));
  case 'Y': return table_value::of_number(static_cast<double>(little_endian<std::int64_t>(bytes.data())) / 10000.0);
  case 'T': {
    const auto day = little_endian<std::int32_t>(bytes.data());
    if (day == 0 || bytes.find_first_not_of(' ') == bytes.npos) return {};
    return table_value::of_date_time(
        to_milliseconds(date_time_number(day - double{julian_origin}, little_endian<std::int32_t>(bytes.data() + 4))));
  }
  case '+': // big-endian with the sign bit inverted
    return table_value::of_integer(
        static_cast<std::int32_t>(__builtin_bswap32(little_endian<std::uint32_t>(bytes.data())) ^ 0x80000000U));
  case 'O': { // big-endian; the sign bit of a positive number is set, all bits of a negative one are inverted
    const std::uint64_t bits = __builtin_bswap64(little_endian<std::uint64_t>(bytes.data()));
    if (bits == 0) return {};
    return table_value::of_number(std::bit_cast<double>(bits >> 63 ? bits & ~(std::uint64_t{1} << 63) : ~bits));
  }
  case '@': { // big-endian milliseconds since the day before 1 January of the year 1
    const double ms = std::bit_cast<double>(__builtin_bswap64(little_endian<std::uint64_t>(bytes.data())));
    constexpr double days_to_origin = 693594;
    if (ms == 0 || !std::isfinite(ms)) return {};
    return table_value::of_date_time(to_milliseconds(ms / 86400000.0 - days_to_origin));
  }
  case 'B':
    if (source_.fields_[field].type == field_type::floating)
      return table_value::of_number(little_endian<double>(bytes.data()));
    return {};
  case 'M': return memo(field, bytes);
  default: return {};
  }
}

bool dbf_cursor::has_flag(std::int32_t bit) const {
  if (bit < 0 || !source_.null_flags_) return false;
  const auto byte = static_cast<std::size_t>(bit) / 8;
  return byte < source_.null_flags_->size && (record_[source_.null_flags_->offset + byte] >> bit % 8 & 1);
}

table_value dbf_cursor::text(std::size_t field, std::string_view bytes) {
  if (bytes.empty()) return {};
  if (source_.code_page_->number() == utf_8) bytes = without_cut_character(bytes);
  if (is_ascii(bytes)) return table_value::of_text(bytes);
  texts_[field] = source_.code_page_->utf8(bytes);
  return table_value::of_text(texts_[field]);
}

table_value dbf_cursor::digits(std::size_t field, std::string_view bytes) const {
  if (bytes.empty()) return {};
  if (source_.layout_[field].decimals == 0) {
    std::int64_t integer = 0;
    const char* const last = bytes.data() + bytes.size();
    const auto [end, error] = std::from_chars(bytes.data() + (bytes.front() == '+'), last, integer);
    if (error == std::errc() && end == last) return table_value::of_integer(integer);
  }
  if (const auto number = plain_number(bytes)) return table_value::of_number(*number);
  if (means_no_number(bytes)) return {};
  fail(field, bytes, "a number");
}

table_value dbf_cursor::date(std::size_t field, std::string_view bytes) const {
  int number = 0;
  for (const char c : bytes) {
    if (c < '0' || c > '9') {
      if (trimmed(bytes).empty()) return {};
      fail(field, bytes, "a date");
    }
    number = number * 10 + (c - '0');
  }
  if (number == 0) return {};
  const auto day = serial_day(number / 10000, number / 100 % 100, number % 100);
  if (!day) fail(field, bytes, "a date");
  return table_value::of_date_time(*day);
}

table_value dbf_cursor::memo(std::size_t field, std::string_view bytes) {
  std::uint64_t block = 0;
  if (source_.layout_[field].foxpro_binary) {
    block = little_endian<std::uint32_t>(bytes.data());
  } else {
    bytes = trimmed(bytes);
    if (bytes.empty()) return {};
    const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), block);
    if (error != std::errc() || end != bytes.data() + bytes.size()) fail(field, bytes, "the number of a memo's block");
  }
  if (block == 0) return {};
  try {
    if (!source_.memo_) throw table_source_exception("", "", "", "the file is missing.");
    texts_[field] = source_.memo_->text(block);
    return text(field, texts_[field]);
  } catch (const table_source_exception& error) {
    throw table_source_exception(source_.file(), "", source_.fields_[field].name,
                                 "record " + std::to_string(row_number()) + ", in the memo file: " + error.cause());
  }
}

void dbf_cursor::fail(std::size_t field, std::string_view bytes, const char* expected) const {
  const std::uint64_t record = read_ - static_cast<std::size_t>(end_ - record_) / source_.record_size_ + 1;
  std::string shown = source_.code_page_->utf8(bytes);
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c >= 0 && c < ' '; }, '?');
  throw table_source_exception(source_.file(), "", source_.fields_[field].name,
                               "record " + std::to_string(record) + ": expected " + std::string(expected) +
                                   ", found \"" + shown + "\".");
}

std::unique_ptr<row_cursor> dbf_source::rows(std::size_t, std::vector<row_filter> filters) {
  return std::make_unique<dbf_cursor>(*this, std::move(filters));
}

} // namespace

std::unique_ptr<table_source> open_dbf(const fs::path& file) {
  constexpr std::uint64_t longest_name = 64;
  const auto page = open_beside(file, {".cpg"});
  const std::string encoding =
      page ? page->text(0, static_cast<std::size_t>(std::min(longest_name, page->size()))) : std::string();
  auto source = std::make_unique<dbf_source>(open_bytes(file), open_beside(file, {".dbt", ".fpt"}), encoding);
  if (page) source->add_companion(page->name());
  return source;
}

std::unique_ptr<table_source> open_dbf(std::span<const std::byte> table, std::optional<std::span<const std::byte>> memo,
                                       std::string name, std::string_view encoding) {
  auto memo_bytes = memo ? bytes_in_memory(*memo, name) : nullptr;
  return std::make_unique<dbf_source>(bytes_in_memory(table, std::move(name)), std::move(memo_bytes), encoding);
}

} // namespace vesk
