#include "paradox_writer.h"

#include "dataset/text_encoding.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace vesk {

namespace {

constexpr std::size_t kilobytes = 16, block_size = kilobytes * 1024, block_header = 6, table_name_size = 261;

std::size_t size_of(const paradox_writer::field& field) {
  using type = paradox_writer::type;
  if (field.code == type::alpha) return field.size;
  return field.code == type::number || field.code == type::timestamp ? 8 : 4;
}

void append_big_endian(std::string& bytes, std::uint64_t number, std::size_t size) {
  while (size-- > 0) bytes += static_cast<char>(number >> (8 * size) & 0xff);
}

// Encoded so that bytes sort like the numbers.
void append_double(std::string& bytes, double number) {
  constexpr std::uint64_t sign = std::uint64_t{1} << 63;
  const auto raw = std::bit_cast<std::uint64_t>(number);
  append_big_endian(bytes, raw & sign ? ~raw : raw ^ sign, 8);
}

double number_of(const catalogue_value& value) {
  const auto* const integer = std::get_if<std::int64_t>(&value);
  return integer ? static_cast<double>(*integer) : std::get<double>(value);
}

void append_value(std::string& bytes, const paradox_writer::field& field, const catalogue_value& value) {
  using type = paradox_writer::type;
  const std::size_t size = size_of(field);
  if (std::holds_alternative<std::monostate>(value)) {
    bytes.append(size, '\0');
  } else if (field.code == type::alpha) {
    const auto text = windows_1252_from_utf8(std::get<std::string>(value));
    if (!text || text->size() > size) throw std::runtime_error("no text for field " + field.name);
    bytes += *text + std::string(size - text->size(), '\0');
  } else if (field.code == type::number) {
    append_double(bytes, number_of(value));
  } else if (field.code == type::timestamp) {
    constexpr double days_to_origin = 693594;
    append_double(bytes, std::round((number_of(value) + days_to_origin) * 86400000.0));
  } else {
    append_big_endian(bytes, static_cast<std::uint64_t>(std::get<std::int64_t>(value)) ^ 0x80000000U, 4);
  }
}

template <class T>
void put(std::string& bytes, std::size_t offset, T number) {
  std::memcpy(bytes.data() + offset, &number, sizeof number);
}

} // namespace

paradox_writer::paradox_writer(std::vector<field> fields) : fields_(std::move(fields)) {
  for (const field& f : fields_) record_size_ += size_of(f);
  per_block_ = (block_size - block_header) / record_size_;
}

void paradox_writer::add(const std::vector<catalogue_value>& row) {
  const std::size_t block = rows_ / per_block_, in_block = rows_ % per_block_;
  if (in_block == 0) { // a block begins with the numbers of the next and the previous one
    blocks_.resize(block * block_size + block_header);
    put(blocks_, block * block_size + 2, static_cast<std::uint16_t>(block));
    if (block > 0) put(blocks_, (block - 1) * block_size, static_cast<std::uint16_t>(block + 1));
  }
  for (std::size_t i = 0; i < fields_.size(); ++i) append_value(blocks_, fields_[i], row[i]);
  put(blocks_, block * block_size + 4, static_cast<std::uint16_t>(in_block * record_size_)); // of the last record
  ++rows_;
}

void paradox_writer::save(const std::filesystem::path& file) const {
  constexpr std::size_t fields_start = 0x78, header_size = 4096;
  const std::size_t count = fields_.size(), blocks = (blocks_.size() + block_size - 1) / block_size;
  if (blocks > 0xffff) throw std::runtime_error("too many rows for " + file.string());
  const auto in_16_bits = [](std::size_t number) { return static_cast<std::uint16_t>(number); };
  std::string header(fields_start, '\0');
  put(header, 0x00, in_16_bits(record_size_));
  put(header, 0x02, in_16_bits(header_size));
  put(header, 0x04, std::uint8_t{2}); // a table without an index
  put(header, 0x05, static_cast<std::uint8_t>(kilobytes));
  put(header, 0x06, rows_);
  for (const std::size_t at : {0x0a, 0x0c, 0x10}) put(header, at, in_16_bits(blocks)); // used, in the file, the last
  put(header, 0x0e, in_16_bits(blocks > 0));                                           // the first
  put(header, 0x21, in_16_bits(count));
  put(header, 0x25, std::uint32_t{0xff00ff00}); // the encryption is in the second header
  put(header, 0x39, std::uint8_t{12});          // version 7
  put(header, 0x6a, std::uint16_t{1252});
  for (const field& f : fields_) {
    header += static_cast<char>(f.code);
    header += static_cast<char>(size_of(f));
  }
  header.append(4 + 4 * count, '\0'); // pointers, which are used only in memory
  std::string name = file.filename().string();
  name.resize(table_name_size);
  header += name;
  for (const field& f : fields_) header += f.name + '\0';
  for (std::size_t i = 1; i <= count; ++i) header += {static_cast<char>(i), '\0'};
  header += "ANSIINTL";
  if (header.size() >= header_size) throw std::runtime_error("too many fields for " + file.string());
  header.resize(header_size);

  std::ofstream out(file, std::ios::binary);
  out << header << blocks_ << std::string(blocks * block_size - blocks_.size(), '\0');
  if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
}

void write_paradox_catalogue(catalogue_store& from, const std::filesystem::path& folder) {
  using enum paradox_writer::type;
  using field = paradox_writer::field;
  const field sort_key{"Sort_key", long_integer}, model_id{"Model_id", long_integer}, isc{"ISC_number", long_integer},
      description{"Description", alpha, 80}, minimum{"Minimum", number}, maximum{"Maximum", number},
      standard{"Default", number};
  const struct {
    const char* file;
    std::vector<field> fields;
  } tables[] = {
      {"models.DB", {{"Model_id", counter}, {"Model_name", alpha, 80}, {"Library", alpha, 80}, sort_key}},
      {"solution.db", {{"ID", counter}, {"Solution", alpha, 30}}},
      {"Parameters.DB", {model_id, isc, minimum, maximum, standard, description, sort_key}},
      {"Systems.DB", {{"Model_system_id", long_integer}, model_id, description, sort_key}},
      {"Constants.DB", {{"Group_id", long_integer}, isc, minimum, maximum, standard, description, sort_key}},
      {"Time_functions.DB", {model_id, isc, description, sort_key}},
      {"Constants_groups.DB", {{"Group_id", counter}, model_id, description, sort_key}},
      {"segment_types.DB", {model_id, {"Vesk_segment_type_id", long_integer}, description, sort_key}},
      {"output_control.DB",
       {{"Model_Id", long_integer},
        isc,
        {"Description", alpha, 40},
        {"Units", alpha, 15},
        {"Short_Desc", alpha, 15},
        sort_key,
        {"Csv_filename", alpha, 255}}},
  };
  for (const auto& table : tables) {
    std::vector<std::string_view> columns;
    for (const field& f : table.fields) columns.push_back(f.name);
    paradox_writer writer(table.fields);
    for (const catalogue_row& row : from.read(std::filesystem::path(table.file).stem().string(), columns))
      writer.add(row);
    writer.save(folder / table.file);
  }
}

} // namespace vesk
