// The memo file of a dBASE table.
#pragma once

#include "query/sources/bytes/byte_source.h"

#include <cstdint>
#include <string>

namespace vesk {

enum class dbf_memo_kind : std::uint8_t {
  dbase_3, // blocks of 512 bytes, a text ends at a byte 1A
  dbase_4, // block size in the header, the size before each text
  foxpro   // the same, numbers big-endian
};

class dbf_memo {
public:
  // `bytes` must outlive this object.
  dbf_memo(const byte_source& bytes, dbf_memo_kind kind);

  // The text that begins in `block`, as stored in the file. Empty for block 0. Throws table_source_exception if it is
  // not in the file.
  std::string text(std::uint64_t block) const;

private:
  template <class T>
  T number(std::uint64_t offset) const; // in the byte order of the file

  const byte_source& bytes_;
  dbf_memo_kind kind_;
  std::size_t block_size_ = 512;
};

} // namespace vesk
