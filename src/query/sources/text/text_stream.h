// Reads a text from start to end, with only a part of it in memory.
#pragma once

#include "query/sources/bytes/byte_source.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace vesk {

class text_stream {
public:
  // A complete text in memory, which the caller keeps.
  explicit text_stream(std::string_view text)
      : begin_(text.data()), end_(text.data() + text.size()), is_complete_(true) {}

  // The text of a file after its byte order mark, beginning at byte `start` of the text; `source` must outlive this
  // object. UTF-16 is converted to UTF-8, and `start` then counts bytes of UTF-8; anything else is unchanged. Throws
  // table_source_exception.
  text_stream(const byte_source& source, std::uint64_t start);

  // The part of the text in memory.
  const char* begin() const { return begin_; }
  const char* end() const { return end_; }
  bool is_complete() const { return is_complete_; } // it extends to the end of the whole text

  // Drops the text before `keep` and appends more at the end; all pointers into the text become invalid. Do not call it
  // if the text is complete.
  void read_on(const char* keep);

private:
  enum class encoding { unchanged, utf_16_little, utf_16_big };

  std::size_t fetch(char* to, std::size_t size);

  const byte_source* source_ = nullptr;
  encoding encoding_ = encoding::unchanged;
  std::uint64_t next_ = 0; // in the file
  std::unique_ptr<char[]> place_;
  std::size_t room_ = 0;
  const char* begin_ = nullptr;
  const char* end_ = nullptr;
  bool is_complete_ = false;
};

} // namespace vesk
