#include "sandbox/classic_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <vector>

namespace sandbox {

namespace {

constexpr std::uint64_t padding = 4; // names, attributes and values end at a multiple of it
std::optional<std::uint64_t> padded(std::uint64_t size) {
  if (size > UINT64_MAX - padding) return {};
  return (size + padding - 1) / padding * padding;
}

// By type number: none, byte, char, short, int, float, double; CDF-5 adds ubyte, ushort, uint, int64, uint64.
constexpr std::array<std::uint64_t, 12> type_sizes = {0, 1, 1, 2, 4, 4, 8, 1, 2, 4, 8, 8};

// Bytes that a variable takes, or nothing where the file's numbers are wild.
class Product {
public:
  void times(std::uint64_t factor) { is_wild_ = __builtin_mul_overflow(value_, factor, &value_) || is_wild_; }
  std::optional<std::uint64_t> value() const { return is_wild_ ? std::nullopt : std::optional(value_); }

private:
  std::uint64_t value_ = 1;
  bool is_wild_ = false;
};

// The header, in the order of the file. Each function answers false where the file ends or its numbers are wild.
class Header {
public:
  explicit Header(std::FILE* file) : file_(file) {}

  bool is_classic() {
    std::array<unsigned char, 4> magic{};
    if (std::fread(magic.data(), 1, magic.size(), file_) != magic.size()) return false;
    if (magic[0] != 'C' || magic[1] != 'D' || magic[2] != 'F') return false;
    wide_counts_ = magic[3] == 5, wide_offsets_ = magic[3] != 1;
    return magic[3] == 1 || magic[3] == 2 || magic[3] == 5;
  }

  // What the file must hold, in bytes. After is_classic.
  std::optional<std::uint64_t> size() {
    std::uint64_t records = 0;
    if (!count(records) || !dimensions() || !attributes() || !variables()) return {};
    const std::uint64_t streaming = wide_counts_ ? UINT64_MAX : UINT32_MAX;
    return end(records == streaming ? 0 : records); // then the number follows from the size
  }

private:
  struct Variable {
    std::uint64_t begin = 0, size = 0, padded_size = 0; // of one record, where it has records
    bool has_records = false;
  };

  bool number(std::uint64_t& value, int bytes) {
    value = 0;
    for (int i = 0; i < bytes; ++i) {
      const int byte = std::getc(file_);
      if (byte == EOF) return false;
      value = value << 8 | static_cast<unsigned>(byte);
    }
    return true;
  }
  bool count(std::uint64_t& value) { return number(value, wide_counts_ ? 8 : 4); }
  bool tag() {
    std::uint64_t ignored = 0;
    return number(ignored, 4);
  }
  bool skip(std::uint64_t bytes) {
    const auto size = padded(bytes);
    return size && *size < std::uint64_t{1} << 40 && std::fseek(file_, static_cast<long>(*size), SEEK_CUR) == 0;
  }
  bool name() {
    std::uint64_t length = 0;
    return count(length) && skip(length);
  }
  bool type(std::uint64_t& bytes) {
    std::uint64_t number_of_type = 0;
    if (!number(number_of_type, 4) || number_of_type == 0 || number_of_type >= type_sizes.size()) return false;
    bytes = type_sizes[number_of_type];
    return true;
  }

  bool dimensions() {
    std::uint64_t size = 0, length = 0;
    if (!tag() || !count(size)) return false;
    for (; size > 0; --size) {
      if (!name() || !count(length)) return false;
      lengths_.push_back(length);
    }
    return true;
  }

  bool attributes() {
    std::uint64_t size = 0, bytes = 0, values = 0;
    if (!tag() || !count(size)) return false;
    for (; size > 0; --size) {
      if (!name() || !type(bytes) || !count(values)) return false;
      Product all;
      all.times(values), all.times(bytes);
      if (!all.value() || !skip(*all.value())) return false;
    }
    return true;
  }

  bool variables() {
    std::uint64_t size = 0;
    if (!tag() || !count(size)) return false;
    for (; size > 0; --size)
      if (!variable()) return false;
    return true;
  }

  bool variable() {
    Variable variable;
    Product bytes;
    std::uint64_t shape = 0, dimension = 0, of_type = 0, ignored = 0;
    if (!name() || !count(shape)) return false;
    for (std::uint64_t i = 0; i < shape; ++i) {
      if (!count(dimension) || dimension >= lengths_.size()) return false;
      const bool is_record = lengths_[dimension] == 0 && i == 0; // a length of 0 is the one that grows
      variable.has_records |= is_record;
      if (!is_record) bytes.times(lengths_[dimension]);
    }
    if (!attributes() || !type(of_type) || !count(ignored) || !number(variable.begin, wide_offsets_ ? 8 : 4))
      return false;
    bytes.times(of_type);
    const auto with_padding = bytes.value() ? padded(*bytes.value()) : std::nullopt;
    if (!with_padding) return false;
    variable.size = *bytes.value(), variable.padded_size = *with_padding;
    variables_.push_back(variable);
    return true;
  }

  // A single variable with records is not padded.
  std::optional<std::uint64_t> end(std::uint64_t records) const {
    std::uint64_t record_size = 0, record_variables = 0, result = 0;
    for (const Variable& it : variables_)
      if (it.has_records) {
        if (__builtin_add_overflow(record_size, it.padded_size, &record_size)) return {};
        ++record_variables;
      }
    for (const Variable& it : variables_) {
      if (it.size == 0 || (it.has_records && records == 0)) continue;
      Product before;
      before.times(it.has_records ? records - 1 : 0);
      before.times(record_variables == 1 ? it.size : record_size);
      std::uint64_t last = 0;
      if (!before.value() || __builtin_add_overflow(it.begin, *before.value(), &last) ||
          __builtin_add_overflow(last, it.size, &last))
        return {};
      result = std::max(result, last);
    }
    return result;
  }

  std::FILE* file_;
  bool wide_counts_ = false, wide_offsets_ = false;
  std::vector<std::uint64_t> lengths_;
  std::vector<Variable> variables_;
};

} // namespace

std::string missing_end_of(const char* name) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name, "rb"), &std::fclose);
  struct stat state {};
  if (!file || fstat(fileno(file.get()), &state) != 0) return {};
  Header header(file.get());
  if (!header.is_classic()) return {};
  const auto expected = header.size();
  if (!expected) return "is damaged: its header cannot be read";
  const auto found = static_cast<std::uint64_t>(state.st_size);
  if (found >= *expected) return {};
  return "is cut: it has " + std::to_string(found) + " of at least " + std::to_string(*expected) + " bytes";
}

} // namespace sandbox
