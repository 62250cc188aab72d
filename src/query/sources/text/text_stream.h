// A text from front to back, a part of it in memory at a time.
#pragma once

#include "query/sources/bytes/byte_source.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace vesk {

class text_stream {
public:
  // Text that is in memory, whole; it stays the caller's.
  explicit text_stream(std::string_view text)
      : begin_(text.data()), end_(text.data() + text.size()), is_complete_(true) {}

  // A file's text after its byte-order mark, from the byte `start` of the text on; `source` must outlive this. UTF-16
  // becomes UTF-8, where `start` counts bytes of UTF-8; anything else comes unchanged. Throws
  // table_source_exception.
  text_stream(const byte_source& source, std::uint64_t start);

  // What is there of the text.
  const char* begin() const { return begin_; }
  const char* end() const { return end_; }
  bool is_complete() const { return is_complete_; } // it goes to the end of the whole text

  // Drops the text before `keep` and appends more at the end; all positions in the text change. Not for a text
  // that is complete.
  void read_on(const char* keep);

private:
  enum class encoding { as_it_stands, utf_16_little, utf_16_big };

  std::size_t fetch(char* to, std::size_t size);

  const byte_source* source_ = nullptr;
  encoding encoding_ = encoding::as_it_stands;
  std::uint64_t next_ = 0; // in the file
  std::unique_ptr<char[]> place_;
  std::size_t room_ = 0;
  const char* begin_ = nullptr;
  const char* end_ = nullptr;
  bool is_complete_ = false;
};

} // namespace vesk
