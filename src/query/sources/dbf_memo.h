// The memo file of a dBASE table.
#pragma once

#include "query/sources/byte_view.h"

#include <cstdint>
#include <string_view>

namespace vesk {

enum class dbf_memo_kind : std::uint8_t {
  dbase_3, // blocks of 512 bytes, a text ends at a byte 1A
  dbase_4, // block size in the header, the text's size before it
  foxpro   // the same, numbers big-endian
};

class dbf_memo {
public:
  dbf_memo(byte_view bytes, dbf_memo_kind kind);

  // The text that begins in `block`, as it stands in the file. Empty for block 0. Throws table_source_exception when
  // the file does not hold it.
  std::string_view text(std::uint64_t block) const;

private:
  byte_view bytes_;
  dbf_memo_kind kind_;
  std::size_t block_size_ = 512;
};

} // namespace vesk
