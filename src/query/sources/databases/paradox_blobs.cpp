#include "query/sources/databases/paradox_blobs.h"

#include "platform/little_endian.h"
#include "query/sources/table_source.h"

namespace vesk {

paradox_blob paradox_blob::of(std::string_view field) {
  paradox_blob blob{};
  const char* const reference = field.data() + field.size() - reference_size;
  blob.place = little_endian<decltype(blob.place)>(reference);
  blob.size = little_endian<decltype(blob.size)>(reference + sizeof blob.place);
  return blob;
}

std::string blob_content(const byte_source& file, const paradox_blob& blob) {
  constexpr std::uint8_t own_block = 2, shared_block = 3;
  const std::size_t block = blob.place & 0xffffff00U;
  const std::uint8_t entry = blob.place & 0xffU;
  const auto byte_at = [&](std::size_t offset) {
    char byte = 0;
    file.read(offset, &byte, 1);
    return static_cast<std::uint8_t>(byte);
  };
  const std::uint8_t type = byte_at(block);
  if (type == own_block && entry == 0xff) return file.memo(block + 9, blob.size);
  constexpr std::uint8_t entries = 64;
  if (type != shared_block || entry >= entries)
    throw table_source_exception(file.name(), "", "", "expected a memo at byte " + std::to_string(block) + ".");
  // An entry has the position and the size of its blob in units of 16 bytes, and the number of bytes used in the last
  // one.
  const std::uint8_t piece = byte_at(block + 12 + std::size_t{5} * entry);
  return file.memo(block + std::size_t{16} * piece, blob.size);
}

} // namespace vesk
