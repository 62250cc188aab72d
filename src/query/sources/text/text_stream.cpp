#include "query/sources/text/text_stream.h"

#include "platform/code_page.h"
#include "query/sources/table_source.h"

#include <algorithm>
#include <cstring>

namespace vesk {

namespace {

constexpr std::size_t step = byte_window::usual_size;

// A pair of units is one character, which must not be split.
bool is_first_of_pair(const char* unit, bool big_endian) {
  return (static_cast<unsigned char>(unit[big_endian ? 0 : 1]) & 0xfcU) == 0xd8;
}

} // namespace

text_stream::text_stream(const byte_source& source, std::uint64_t start) : source_(&source) {
  const std::string mark = source.text(0, static_cast<std::size_t>(std::min<std::uint64_t>(3, source.size())));
  if (mark == "\xef\xbb\xbf")
    next_ = 3;
  else if (mark.starts_with("\xff\xfe") || mark.starts_with("\xfe\xff"))
    encoding_ = mark[0] == '\xff' ? encoding::utf_16_little : encoding::utf_16_big;
  if (encoding_ == encoding::unchanged) {
    next_ += start;
    if (const char* const text = source.in_memory()) {
      begin_ = text + next_;
      end_ = text + source.size();
      is_complete_ = true;
      return;
    }
    read_on(nullptr);
    return;
  }
  next_ = 2;
  read_on(nullptr);
  while (static_cast<std::uint64_t>(end_ - begin_) < start && !is_complete_) {
    start -= static_cast<std::uint64_t>(end_ - begin_);
    read_on(end_);
  }
  begin_ += std::min<std::uint64_t>(start, static_cast<std::uint64_t>(end_ - begin_));
}

void text_stream::read_on(const char* keep) {
  const std::size_t kept = keep ? static_cast<std::size_t>(end_ - keep) : 0;
  // Reads more if more is kept, so that a long row is not scanned too often.
  const auto left = static_cast<std::size_t>(std::min<std::uint64_t>(std::max(step, kept), source_->size() - next_));
  const std::size_t wanted = kept + (encoding_ == encoding::unchanged ? left : 2 * left + 4);
  if (wanted > room_ || !place_) {
    room_ = std::max({wanted, std::size_t{1}, keep ? 2 * kept : 0});
    auto larger = std::make_unique_for_overwrite<char[]>(room_);
    if (kept > 0) std::memcpy(larger.get(), keep, kept);
    place_ = std::move(larger);
  } else if (kept > 0) {
    std::memmove(place_.get(), keep, kept);
  }
  begin_ = end_ = place_.get(); // in case reading throws
  end_ = begin_ + kept + fetch(place_.get() + kept, left);
  is_complete_ = next_ >= source_->size();
}

// Reads the next `size` bytes of the file as text; returns the size of that text in bytes.
std::size_t text_stream::fetch(char* to, std::size_t size) {
  if (encoding_ == encoding::unchanged) {
    source_->read(next_, to, size);
    next_ += size;
    return size;
  }
  const bool big_endian = encoding_ == encoding::utf_16_big;
  const code_page* const page = code_page::find(big_endian ? 1201 : 1200);
  if (!page) throw table_source_exception(source_->name(), "", "", "this system does not support UTF-16.");
  std::string units = source_->text(next_, size);
  if (next_ + size < source_->size()) {
    units.resize(units.size() / 2 * 2);
    if (units.size() > 2 && is_first_of_pair(units.data() + units.size() - 2, big_endian))
      units.resize(units.size() - 2);
  }
  next_ += units.size();
  const std::string text = page->utf8(units);
  std::memcpy(to, text.data(), text.size());
  return text.size();
}

} // namespace vesk
