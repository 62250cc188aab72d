#include "query/sources/biff_records.h"

#include "platform/code_page.h"

namespace vesk {

bool biff_records::next() {
  constexpr std::size_t header_size = 4;
  if (next_ + header_size > bytes_.size()) return false;
  id_ = bytes_.number<std::uint16_t>(next_);
  const std::size_t size = bytes_.number<std::uint16_t>(next_ + 2);
  data_ = bytes_.part(next_ + header_size, size);
  next_ += header_size + size;
  return true;
}

std::vector<std::string_view> biff_records::with_continuation() {
  std::vector<std::string_view> parts{data_.text(0, data_.size())};
  for (biff_records ahead = *this; ahead.next() && ahead.id() == biff_continue; *this = ahead)
    parts.push_back(ahead.data_.text(0, ahead.data_.size()));
  return parts;
}

biff_texts::biff_texts(std::vector<std::string_view> parts, bool is_biff8, const code_page& texts)
    : parts_(std::move(parts)), is_biff8_(is_biff8), code_page_(&texts) {}

// Up to `most` bytes that stand together; nothing at the end only.
std::string_view biff_texts::take(std::size_t most) {
  while (part_ < parts_.size() && parts_[part_].empty()) ++part_;
  if (part_ == parts_.size()) {
    ended_ = true;
    return {};
  }
  const std::string_view taken = parts_[part_].substr(0, most);
  parts_[part_].remove_prefix(taken.size());
  return taken;
}

std::uint32_t biff_texts::number(std::size_t bytes) {
  std::uint32_t result = 0;
  for (std::size_t i = 0; i < bytes; ++i) {
    const std::string_view byte = take(1);
    if (!byte.empty()) result |= std::uint32_t{static_cast<std::uint8_t>(byte[0])} << 8 * i;
  }
  return result;
}

void biff_texts::skip(std::size_t bytes) {
  while (bytes > 0 && !ended_) bytes -= take(bytes).size();
}

std::string biff_texts::text(std::size_t length_bytes) {
  std::size_t left = number(length_bytes); // characters
  std::string result;
  if (!is_biff8_) {
    while (left > 0 && !ended_) {
      const std::string_view piece = take(left);
      left -= piece.size();
      result += code_page_->utf8(piece);
    }
    return result;
  }
  constexpr std::uint32_t wide = 1, far_eastern = 4, rich = 8;
  std::uint32_t flags = number(1);
  const std::size_t runs = flags & rich ? number(2) : 0;
  const std::size_t extension = flags & far_eastern ? number(4) : 0;
  static const code_page* const latin_1 = code_page::find(28591);
  static const code_page* const utf_16 = code_page::find(1200);
  while (left > 0) {
    const bool is_wide = flags & wide;
    const std::string_view piece = take(left * (is_wide ? 2 : 1));
    if (ended_) break;
    const code_page* const encoding = is_wide ? utf_16 : latin_1;
    result += is_ascii(piece) && !is_wide ? std::string(piece) : (encoding ? encoding : code_page_)->utf8(piece);
    left -= std::min(left, piece.size() / (is_wide ? 2 : 1) + (is_wide && piece.size() % 2));
    if (left > 0) flags = number(1); // continued
  }
  skip(runs * 4);
  skip(extension);
  return result;
}

} // namespace vesk
