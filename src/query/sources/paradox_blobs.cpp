#include "query/sources/paradox_blobs.h"

namespace vesk {

paradox_blob paradox_blob::of(std::string_view field) {
  paradox_blob blob{};
  const char* const reference = field.data() + field.size() - reference_size;
  std::memcpy(&blob.place, reference, sizeof blob.place);
  std::memcpy(&blob.size, reference + sizeof blob.place, sizeof blob.size);
  return blob;
}

std::string_view blob_content(const byte_view& file, const paradox_blob& blob, const std::string& name) {
  constexpr std::uint8_t own_block = 2, shared_block = 3;
  const std::size_t block = blob.place & 0xffffff00U;
  const std::uint8_t entry = blob.place & 0xffU;
  const auto type = file.number<std::uint8_t>(block);
  if (type == own_block && entry == 0xff) return file.text(block + 9, blob.size);
  constexpr std::uint8_t entries = 64;
  if (type != shared_block || entry >= entries)
    throw table_source_exception(name, "", "", "there is no blob at byte " + std::to_string(block) + ".");
  // An entry has the place and the size of its blob in pieces of 16 bytes, and how many of the last piece are used.
  const auto piece = file.number<std::uint8_t>(block + 12 + std::size_t{5} * entry);
  return file.text(block + std::size_t{16} * piece, blob.size);
}

} // namespace vesk
