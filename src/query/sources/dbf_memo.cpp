#include "query/sources/dbf_memo.h"

#include <algorithm>

namespace vesk {

namespace {

std::uint32_t big_endian(std::uint32_t number) {
  return __builtin_bswap32(number);
}

} // namespace

dbf_memo::dbf_memo(byte_view bytes, dbf_memo_kind kind) : bytes_(bytes), kind_(kind) {
  if (kind_ == dbf_memo_kind::dbase_4 && bytes_.size() >= 24) {
    const std::size_t size = bytes_.number<std::uint16_t>(20);
    if (size != 0) block_size_ = size;
  } else if (kind_ == dbf_memo_kind::foxpro && bytes_.size() >= 8) {
    block_size_ = std::max<std::size_t>(1, big_endian(bytes_.number<std::uint32_t>(4)) & 0xffff);
  }
}

std::string_view dbf_memo::text(std::uint64_t block) const {
  if (block == 0) return {};
  if (block > bytes_.size()) block = bytes_.size(); // beyond the end in any case, and without overflow
  const std::size_t offset = static_cast<std::size_t>(block) * block_size_;
  if (kind_ == dbf_memo_kind::foxpro)
    return bytes_.text(offset + 8, big_endian(bytes_.number<std::uint32_t>(offset + 4)));
  if (kind_ == dbf_memo_kind::dbase_4 && bytes_.number<std::uint32_t>(offset) == 0x0008ffff) {
    const std::uint32_t size = bytes_.number<std::uint32_t>(offset + 4); // its own 8 bytes count too
    return bytes_.text(offset + 8, size < 8 ? 0 : size - 8);
  }
  const std::string_view rest = bytes_.text(offset, bytes_.size() - std::min(offset, bytes_.size()));
  return rest.substr(0, rest.find('\x1a'));
}

} // namespace vesk
