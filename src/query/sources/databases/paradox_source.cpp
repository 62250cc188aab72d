#include "query/sources/databases/paradox_source.h"

#include "platform/code_page.h"
#include "platform/little_endian.h"
#include "query/sources/bytes/byte_source.h"
#include "query/sources/bytes/byte_view.h"
#include "query/sources/databases/paradox_blobs.h"
#include "query/sources/text/date_text.h"
#include "query/sources/text/number_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace vesk {

namespace {

namespace fs = std::filesystem;

// The type codes of the file format.
enum class paradox_type : std::uint8_t {
  alpha = 0x01,
  date = 0x02,
  short_integer = 0x03,
  long_integer = 0x04,
  currency = 0x05,
  number = 0x06,
  logical = 0x09,
  memo = 0x0c,
  blob = 0x0d,
  formatted_memo = 0x0e,
  ole = 0x0f,
  graphic = 0x10,
  time = 0x14,
  timestamp = 0x15,
  auto_increment = 0x16,
  bcd = 0x17,
  bytes = 0x18
};

struct type_row {
  paradox_type code;
  std::uint8_t size; // in the record; 0: stored in the header
  field_type type;
};

constexpr type_row types[] = {
    {paradox_type::alpha, 0, field_type::string},
    {paradox_type::date, 4, field_type::date},
    {paradox_type::short_integer, 2, field_type::small_integer},
    {paradox_type::long_integer, 4, field_type::integer},
    {paradox_type::currency, 8, field_type::currency},
    {paradox_type::number, 8, field_type::floating},
    {paradox_type::logical, 1, field_type::boolean},
    {paradox_type::memo, 0, field_type::memo},
    {paradox_type::blob, 0, field_type::blob},
    {paradox_type::formatted_memo, 0, field_type::blob},
    {paradox_type::ole, 0, field_type::blob},
    {paradox_type::graphic, 0, field_type::blob},
    {paradox_type::time, 4, field_type::time},
    {paradox_type::timestamp, 8, field_type::date_time},
    {paradox_type::auto_increment, 4, field_type::auto_increment},
    {paradox_type::bcd, 17, field_type::bcd},
    {paradox_type::bytes, 0, field_type::bytes},
};

constexpr double days_to_origin = 693594; // day 1 is 1 January of the year 1

struct paradox_field {
  paradox_type code;
  std::size_t offset, size; // in the record
};

class paradox_source : public table_source {
public:
  paradox_source(std::unique_ptr<byte_source> table, std::unique_ptr<byte_source> blobs)
      : table_source(table->name()), table_(std::move(table)), blobs_(std::move(blobs)) {
    tables_ = {file()};
    if (blobs_) companions_ = {blobs_->name()};
    constexpr std::size_t longest_header = 0xffff;
    const std::string beginning =
        table_->text(0, static_cast<std::size_t>(std::min<std::uint64_t>(longest_header, table_->size())));
    const byte_view header(std::as_bytes(std::span(beginning)), file());
    read_header(header);
    read_fields(header);
  }

  const std::vector<table_field>& fields(std::size_t) override { return fields_; }
  std::unique_ptr<row_cursor> rows(std::size_t, std::vector<row_filter> filters) override;

private:
  friend class paradox_cursor;

  void read_header(const byte_view& bytes);
  void read_fields(const byte_view& bytes);
  [[noreturn]] void fail(std::string cause) const { throw table_source_exception(file(), "", "", std::move(cause)); }

  // From version 4 on the header has a second part.
  bool has_second_header() const { return version_ >= 5; }

  const std::unique_ptr<byte_source> table_, blobs_; // the memo file may be missing
  std::uint8_t version_ = 0;
  const code_page* code_page_ = nullptr;
  std::size_t record_size_ = 0, header_size_ = 0, block_size_ = 0, first_block_ = 0, record_count_ = 0;
  std::size_t fields_start_ = 0;
  std::vector<paradox_field> layout_;
  std::vector<table_field> fields_;
};

void paradox_source::read_header(const byte_view& bytes) {
  if (bytes.size() < 0x58) fail("the file is too short for a Paradox table.");
  record_size_ = bytes.number<std::uint16_t>(0);
  header_size_ = bytes.number<std::uint16_t>(2);
  const auto kind = bytes.number<std::uint8_t>(4);
  block_size_ = std::size_t{bytes.number<std::uint8_t>(5)} * 1024;
  record_count_ = bytes.number<std::uint32_t>(6);
  first_block_ = bytes.number<std::uint16_t>(14);
  version_ = bytes.number<std::uint8_t>(0x39);
  if ((kind != 0 && kind != 2) || version_ < 3 || version_ > 14 || block_size_ == 0 || block_size_ > 32 * 1024 ||
      record_size_ == 0 || header_size_ < 0x58)
    fail("not a Paradox table.");
  if (header_size_ > bytes.size())
    fail("the file ends within its header, at byte " + std::to_string(bytes.size()) + " of " +
         std::to_string(header_size_) + ".");
  fields_start_ = has_second_header() ? 0x78 : 0x58;

  constexpr std::uint32_t see_second_header = 0xff00ff00;
  auto encryption = bytes.number<std::uint32_t>(0x25);
  if (encryption == see_second_header && has_second_header()) encryption = bytes.number<std::uint32_t>(0x5c);
  if (encryption != 0) fail("the table is encrypted.");

  unsigned page = has_second_header() ? bytes.number<std::uint16_t>(0x6a) : 0;
  if (page == 0) page = has_second_header() ? 1252 : 437; // 437 for versions before 4
  code_page_ = code_page::find(page);
  if (!code_page_) fail("its text is in code page " + std::to_string(page) + ", which this system does not support.");
}

void paradox_source::read_fields(const byte_view& bytes) {
  const std::size_t count = bytes.number<std::uint16_t>(0x21);
  if (count == 0 || count > 255) fail("the header claims " + std::to_string(count) + " fields.");
  // After the types: a pointer to the table name and one to each field name, the table name in a space of fixed size,
  // then the field names, each terminated by a zero.
  const std::size_t table_name_size = version_ >= 12 ? 261 : 79;
  std::size_t name_at = fields_start_ + 2 * count + 4 + 4 * count + table_name_size;
  std::size_t offset = 0;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string_view rest = bytes.text(0, header_size_).substr(std::min(name_at, header_size_));
    const std::string_view name = rest.substr(0, rest.find('\0'));
    name_at += name.size() + 1;
    names.push_back(code_page_->utf8(name));

    const auto code = bytes.number<std::uint8_t>(fields_start_ + 2 * i);
    const auto* const row = std::find_if(std::begin(types), std::end(types),
                                         [&](const type_row& t) { return t.code == static_cast<paradox_type>(code); });
    if (row == std::end(types))
      throw table_source_exception(file(), "", names.back(), "its type " + std::to_string(code) + " is not known.");
    const std::size_t size = row->size ? row->size : bytes.number<std::uint8_t>(fields_start_ + 2 * i + 1);
    layout_.push_back({row->code, offset, size});
    fields_.push_back({"", row->type});
    offset += size;
  }
  if (offset > record_size_)
    fail("its fields take " + std::to_string(offset) + " bytes, but a record has " + std::to_string(record_size_) +
         ".");
  names = distinct_names(std::move(names));
  for (std::size_t i = 0; i < count; ++i) fields_[i].name = std::move(names[i]);
}

class paradox_cursor : public row_cursor {
public:
  paradox_cursor(const paradox_source& source, std::vector<row_filter> filters)
      : row_cursor(std::move(filters)), source_(source), window_(*source.table_), texts_(source.layout_.size()),
        next_block_(source.first_block_) {}

  table_value value(std::size_t field) override;

protected:
  bool advance() override {
    while (next_ == end_)
      if (!to_next_block()) return false;
    record_ = next_;
    next_ += source_.record_size_;
    ++read_;
    return true;
  }

private:
  bool to_next_block();
  table_value text(std::size_t field, std::string_view bytes);
  table_value memo(std::size_t field, std::string_view bytes);

  const paradox_source& source_;
  byte_window window_;
  std::vector<std::string> texts_; // of the current row, by field, for values that need conversion
  std::size_t next_block_, blocks_ = 0, read_ = 0;
  const char* next_ = nullptr;
  const char* end_ = nullptr;
  const char* record_ = nullptr;
};

// A block begins with the number of the next block, that of the previous one, and the offset of its last record.
bool paradox_cursor::to_next_block() {
  const std::uint64_t file_size = source_.table_->size();
  const std::uint64_t in_file = (file_size - source_.header_size_ + source_.block_size_ - 1) / source_.block_size_;
  if (next_block_ == 0 || source_.record_count_ == 0) {
    if (read_ != source_.record_count_)
      source_.fail("the header claims " + std::to_string(source_.record_count_) + " records, but the blocks hold " +
                   std::to_string(read_) + ".");
    return false;
  }
  if (next_block_ > in_file)
    source_.fail("block " + std::to_string(next_block_) + " is missing: the file has only " + std::to_string(in_file) +
                 ".");
  if (++blocks_ > in_file) source_.fail("its blocks form a loop.");
  constexpr std::size_t block_header = 6;
  const std::uint64_t at = source_.header_size_ + std::uint64_t{next_block_ - 1} * source_.block_size_;
  const std::size_t block = next_block_;
  const std::string_view whole =
      window_.at(at, std::max(block_header,
                              static_cast<std::size_t>(std::min<std::uint64_t>(source_.block_size_, file_size - at))));
  next_block_ = little_endian<std::uint16_t>(whole.data());
  const auto last = little_endian<std::int16_t>(whole.data() + 4);
  const std::size_t size =
      last < 0 ? 0 : (static_cast<std::size_t>(last) / source_.record_size_ + 1) * source_.record_size_;
  if (block_header + size > source_.block_size_)
    source_.fail("block " + std::to_string(block) + " claims more records than fit in it.");
  const std::string_view records = window_.at(at + block_header, size);
  next_ = records.data();
  end_ = next_ + records.size();
  return true;
}

// Big-endian, with the sign bit inverted so that bytes sort like numbers.
template <class Unsigned>
auto integer_of(const char* bytes) {
  Unsigned raw = 0;
  for (std::size_t i = 0; i < sizeof raw; ++i)
    raw = static_cast<Unsigned>(raw << 8 | static_cast<std::uint8_t>(bytes[i]));
  constexpr Unsigned sign = static_cast<Unsigned>(Unsigned{1} << (8 * sizeof raw - 1));
  return static_cast<std::make_signed_t<Unsigned>>(static_cast<Unsigned>(raw ^ sign));
}

// The same for doubles: of a positive one the sign bit is inverted, of a negative one all bits.
double double_of(const char* bytes) {
  const std::uint64_t raw = __builtin_bswap64(little_endian<std::uint64_t>(bytes));
  constexpr std::uint64_t sign = std::uint64_t{1} << 63;
  return std::bit_cast<double>(raw & sign ? raw ^ sign : ~raw);
}

bool is_all_zero(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == 0; });
}

// 17 bytes: the sign in the highest bit and the number of decimals in the lowest six, then 32 digits of four bits,
// inverted in a negative number. Writers that convert from a double store no digits beyond its precision.
table_value bcd_value(std::string_view bytes) {
  constexpr std::size_t digits = 32;
  const auto first = static_cast<std::uint8_t>(bytes[0]);
  const bool negative = !(first & 0x80);
  const std::size_t decimals = first & 0x3fU;
  std::string text = negative ? "-" : "";
  bool precise = true;
  for (std::size_t i = 0; i < digits; ++i) {
    if (i + decimals == digits) text += '.';
    const auto byte = static_cast<std::uint8_t>(bytes[1 + i / 2]);
    const unsigned digit = ((i % 2 ? byte : byte >> 4U) ^ (negative ? 0xfU : 0U)) & 0xfU;
    precise = precise && digit <= 9;
    text += static_cast<char>('0' + (precise ? digit : 0));
  }
  const auto number = plain_number(text);
  return number ? table_value::of_number(*number) : table_value();
}

table_value paradox_cursor::value(std::size_t field) {
  const paradox_field& layout = source_.layout_[field];
  const std::string_view bytes(record_ + layout.offset, layout.size);
  switch (layout.code) {
  case paradox_type::alpha: return text(field, bytes.substr(0, bytes.find('\0')));
  case paradox_type::memo: return memo(field, bytes);
  default:
    if (is_all_zero(bytes)) return {};
  }
  const char* const at = bytes.data();
  switch (layout.code) {
  case paradox_type::date: return table_value::of_date_time(integer_of<std::uint32_t>(at) - days_to_origin);
  case paradox_type::time: return table_value::of_date_time(date_time_number(0, integer_of<std::uint32_t>(at)));
  case paradox_type::timestamp: {
    const double milliseconds = double_of(at);
    if (!std::isfinite(milliseconds)) return {};
    const double day = std::floor(milliseconds / 86400000.0);
    return table_value::of_date_time(
        date_time_number(day - days_to_origin, std::round(milliseconds - day * 86400000.0)));
  }
  case paradox_type::short_integer: return table_value::of_integer(integer_of<std::uint16_t>(at));
  case paradox_type::long_integer:
  case paradox_type::auto_increment: return table_value::of_integer(integer_of<std::uint32_t>(at));
  case paradox_type::currency:
  case paradox_type::number: {
    const double number = double_of(at);
    return std::isnan(number) ? table_value() : table_value::of_number(number);
  }
  case paradox_type::logical: return table_value::of_integer(*at & 1);
  case paradox_type::bcd: return bcd_value(bytes);
  default: return {};
  }
}

table_value paradox_cursor::text(std::size_t field, std::string_view bytes) {
  while (!bytes.empty() && bytes.back() == ' ') bytes.remove_suffix(1);
  if (bytes.empty()) return {};
  if (is_ascii(bytes)) return table_value::of_text(bytes);
  texts_[field] = source_.code_page_->utf8(bytes);
  return table_value::of_text(texts_[field]);
}

// The record itself contains the beginning of a memo; a longer memo is also stored, whole, in the memo file.
table_value paradox_cursor::memo(std::size_t field, std::string_view bytes) {
  if (bytes.size() < paradox_blob::reference_size) return {};
  const paradox_blob blob = paradox_blob::of(bytes);
  const std::size_t here = bytes.size() - paradox_blob::reference_size;
  if (blob.size <= here) return text(field, bytes.substr(0, blob.size));
  try {
    if (!source_.blobs_) throw table_source_exception("", "", "", "the file is missing.");
    texts_[field] = blob_content(*source_.blobs_, blob);
    return text(field, texts_[field]);
  } catch (const table_source_exception& error) {
    throw table_source_exception(source_.file(), "", source_.fields_[field].name,
                                 "record " + std::to_string(read_) + ", in the memo file: " + error.cause());
  }
}

std::unique_ptr<row_cursor> paradox_source::rows(std::size_t, std::vector<row_filter> filters) {
  return std::make_unique<paradox_cursor>(*this, std::move(filters));
}

} // namespace

std::unique_ptr<table_source> open_paradox(const fs::path& file) {
  return std::make_unique<paradox_source>(open_bytes(file), open_beside(file, {".mb"}));
}

std::unique_ptr<table_source> open_paradox(std::span<const std::byte> table,
                                           std::optional<std::span<const std::byte>> blobs, std::string name) {
  auto blob_bytes = blobs ? bytes_in_memory(*blobs, name) : nullptr;
  return std::make_unique<paradox_source>(bytes_in_memory(table, std::move(name)), std::move(blob_bytes));
}

} // namespace vesk
