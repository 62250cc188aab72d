// The memo file of a Paradox table, .mb.
#pragma once

#include "query/sources/bytes/byte_source.h"

#include <string>
#include <string_view>

namespace vesk {

// The location of a blob's content, from the last bytes of the record's field.
struct paradox_blob {
  static constexpr std::size_t reference_size = 10;

  std::uint32_t place; // the block's offset; the lowest byte is the entry in the block
  std::uint32_t size;  // of the whole content

  // `field` must have at least `reference_size` bytes.
  static paradox_blob of(std::string_view field);
};

// The blob's content. Throws table_source_exception if it is not in the file.
std::string blob_content(const byte_source& file, const paradox_blob& blob);

} // namespace vesk
