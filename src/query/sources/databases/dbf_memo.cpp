#include "query/sources/databases/dbf_memo.h"

#include <algorithm>
#include <cstring>

namespace vesk {

namespace {

std::uint32_t big_endian(std::uint32_t number) {
  return __builtin_bswap32(number);
}

} // namespace

template <class T>
T dbf_memo::number(std::uint64_t offset) const {
  T result;
  bytes_.read(offset, reinterpret_cast<char*>(&result), sizeof result);
  return result;
}

dbf_memo::dbf_memo(const byte_source& bytes, dbf_memo_kind kind) : bytes_(bytes), kind_(kind) {
  if (kind_ == dbf_memo_kind::dbase_4 && bytes_.size() >= 24) {
    const std::size_t size = number<std::uint16_t>(20);
    if (size != 0) block_size_ = size;
  } else if (kind_ == dbf_memo_kind::foxpro && bytes_.size() >= 8) {
    block_size_ = std::max<std::size_t>(1, big_endian(number<std::uint32_t>(4)) & 0xffff);
  }
}

std::string dbf_memo::text(std::uint64_t block) const {
  if (block == 0) return {};
  if (block > bytes_.size()) block = bytes_.size(); // beyond the end in any case, and avoids overflow
  const std::uint64_t offset = block * block_size_;
  if (kind_ == dbf_memo_kind::foxpro) return bytes_.memo(offset + 8, big_endian(number<std::uint32_t>(offset + 4)));
  if (kind_ == dbf_memo_kind::dbase_4 && number<std::uint32_t>(offset) == 0x0008ffff) {
    const auto size = number<std::uint32_t>(offset + 4); // includes its own 8 bytes
    return bytes_.memo(offset + 8, size < 8 ? 0 : size - 8);
  }
  std::string content;
  bytes_.check(offset, 0);
  for (std::uint64_t at = offset; at < bytes_.size(); at += block_size_) {
    const std::string piece =
        bytes_.text(at, static_cast<std::size_t>(std::min<std::uint64_t>(block_size_, bytes_.size() - at)));
    const std::size_t end = piece.find('\x1a');
    content += piece.substr(0, end);
    if (end != piece.npos) break;
    bytes_.check_memo(content.size());
  }
  return content;
}

} // namespace vesk
