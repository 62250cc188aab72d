#include "query/sources/workbooks/biff_records.h"

#include "platform/code_page.h"
#include "platform/little_endian.h"

namespace vesk {

bool biff_records::next() {
  constexpr std::size_t header_size = 4;
  const byte_source& stream = window_.source();
  is_continued_ = false;
  if (next_ + header_size > stream.size()) return false;
  const char* const header = window_.at(next_, header_size).data();
  id_ = little_endian<std::uint16_t>(header);
  const std::size_t size = little_endian<std::uint16_t>(header + 2);
  stream.check(next_ + header_size, size);
  const std::uint64_t behind = next_ + header_size + size;
  const bool is_last = behind + header_size > stream.size();
  const std::string_view record = window_.at(next_, header_size + size + (is_last ? 0 : header_size));
  data_ = byte_view(std::as_bytes(std::span(record.substr(header_size, size))), stream.name());
  if (!is_last) {
    is_continued_ = little_endian<std::uint16_t>(record.data() + header_size + size) == biff_continue;
  }
  next_ = behind;
  return true;
}

biff_texts::biff_texts(biff_records& record, std::size_t skipped, bool is_biff8, const code_page& texts)
    : record_(record), left_(record.data().text(0, record.data().size())), is_biff8_(is_biff8), code_page_(&texts) {
  skip(skipped);
}

// Up to `most` adjacent bytes; none only at the end.
std::string_view biff_texts::take(std::size_t most) {
  while (left_.empty()) {
    if (!record_.is_continued() || !record_.next()) {
      ended_ = true;
      return {};
    }
    left_ = record_.data().text(0, record_.data().size());
  }
  const std::string_view taken = left_.substr(0, most);
  left_.remove_prefix(taken.size());
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
  std::string units; // of two bytes; two that form one character may be split between two records
  const auto end_units = [&] {
    result += (utf_16 ? utf_16 : code_page_)->utf8(units);
    units.clear();
  };
  while (left > 0) {
    const bool is_wide = flags & wide;
    const std::string_view piece = take(left * (is_wide ? 2 : 1));
    if (ended_) break;
    const bool is_cut = is_wide && piece.size() % 2 != 0;
    if (is_wide) units += piece;
    if (!is_wide || is_cut) end_units();
    if (!is_wide) result += is_ascii(piece) ? std::string(piece) : (latin_1 ? latin_1 : code_page_)->utf8(piece);
    left -= std::min(left, piece.size() / (is_wide ? 2 : 1) + is_cut);
    if (left > 0) flags = number(1); // continued
  }
  end_units();
  skip(runs * 4);
  skip(extension);
  return result;
}

} // namespace vesk
