// Compound files (OLE2): a small file system inside a file.
#pragma once

#include "query/sources/byte_view.h"

#include <string>
#include <string_view>
#include <vector>

namespace vesk {

inline constexpr std::string_view compound_beginning("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8);

class compound_file {
public:
  // `bytes` begin with `compound_beginning`; `name` is the file's, for messages. Both must outlive this. Throws
  // table_source_exception.
  compound_file(byte_view bytes, const std::string& name);

  bool has(std::string_view stream) const;

  // The content of the first stream that has one of these names; empty when there is none. Throws
  // table_source_exception.
  std::vector<std::byte> stream(std::initializer_list<std::string_view> names) const;

private:
  struct entry {
    std::string name; // its ASCII letters
    std::uint32_t start;
    std::uint64_t size;
    bool is_root;
  };

  std::vector<std::uint32_t> chain(const std::vector<std::uint32_t>& table, std::uint32_t first) const;
  std::string_view sector(std::uint32_t number) const;
  std::vector<std::byte> read_chain(std::uint32_t first, std::uint64_t size) const;
  void read_allocation_table();
  void read_directory();
  std::vector<std::byte> content(const entry& e) const;
  [[noreturn]] void fail(std::string cause) const { throw table_source_exception(*name_, "", "", std::move(cause)); }

  byte_view bytes_;
  const std::string* name_;
  std::size_t sector_size_ = 512, small_sector_size_ = 64, small_limit_ = 4096;
  std::vector<std::uint32_t> next_;       // of each sector: the one behind it in its stream
  std::vector<std::uint32_t> next_small_; // the same for the small sectors in the root's stream
  std::vector<entry> entries_;
};

} // namespace vesk
