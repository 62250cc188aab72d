// The memo file of a Paradox table, .mb.
#pragma once

#include "query/sources/bytes/byte_source.h"

#include <string>
#include <string_view>

namespace vesk {

// Where a blob's content lies, as the record has it in the last bytes of its field.
struct paradox_blob {
  static constexpr std::size_t reference_size = 10;

  std::uint32_t place; // the block's offset, and in the lowest byte the entry in it
  std::uint32_t size;  // of the whole content

  // `field` has at least `reference_size` bytes.
  static paradox_blob of(std::string_view field);
};

// The blob's content. Throws table_source_exception when the file does not hold it.
std::string blob_content(const byte_source& file, const paradox_blob& blob);

} // namespace vesk
