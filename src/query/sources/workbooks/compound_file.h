// Compound files (OLE2): a small file system inside a file.
#pragma once

#include "query/sources/bytes/byte_source.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class byte_view;

inline constexpr std::string_view compound_beginning("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8);

class compound_file {
public:
  // `bytes` must begin with `compound_beginning` and outlive this object. Throws table_source_exception.
  explicit compound_file(const byte_source& bytes);

  bool has(std::string_view stream) const;

  // The first non-empty stream with one of these names; null if there is none. The result needs the file's bytes, but
  // not this object. Throws table_source_exception.
  std::unique_ptr<byte_source> stream(std::initializer_list<std::string_view> names) const;

private:
  struct entry {
    std::string name; // its ASCII letters
    std::uint32_t start;
    std::uint64_t size;
    bool is_root;
  };

  std::vector<std::uint32_t> chain(const std::vector<std::uint32_t>& table, std::uint32_t first) const;
  std::uint64_t place_of(std::uint32_t sector) const;    // in the file
  std::size_t size_of_sector(std::uint64_t place) const; // the last one may be truncated
  std::string sector(std::uint32_t number) const;
  std::string read_chain(std::uint32_t first, std::uint64_t size) const;
  void read_allocation_table(const byte_view& header);
  void read_directory(const byte_view& header);
  std::unique_ptr<byte_source> content(const entry& e) const;
  std::string small_content(const entry& e) const;
  [[noreturn]] void fail(std::string cause) const;

  const byte_source& bytes_;
  std::size_t sector_size_ = 512, small_sector_size_ = 64, small_limit_ = 4096;
  std::vector<std::uint32_t> next_;       // for each sector, the next one in its stream
  std::vector<std::uint32_t> next_small_; // the same for small sectors in the root's stream
  std::vector<entry> entries_;
};

} // namespace vesk
