// Writes Paradox tables of version 7 for tests and benchmarks: no index, no memo, text in Windows-1252.
#pragma once

#include "dataset/catalogue.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vesk {

class paradox_writer {
public:
  // The type codes of the file format.
  enum class type : std::uint8_t { alpha = 0x01, long_integer = 0x04, number = 0x06, timestamp = 0x15, counter = 0x16 };
  struct field {
    std::string name;
    type code;
    std::uint8_t size = 0; // of alpha, in bytes
  };

  explicit paradox_writer(std::vector<field> fields);

  // A value for each field: texts in UTF-8, timestamps as days since 30 December 1899. Throws std::runtime_error for a
  // text that is too long.
  void add(const std::vector<catalogue_value>& row);

  void save(const std::filesystem::path& file) const;

private:
  const std::vector<field> fields_;
  std::size_t record_size_ = 0, per_block_ = 0;
  std::uint32_t rows_ = 0;
  std::string blocks_; // complete ones, except the last
};

// Writes all tables used by `read_catalogue` to a folder.
void write_paradox_catalogue(catalogue_store& from, const std::filesystem::path& folder);

} // namespace vesk
