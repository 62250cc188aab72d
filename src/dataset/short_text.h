// A text of at most 255 bytes. A longer one is silently truncated on assignment: to 255 bytes, or up to 3 bytes fewer
// so that no UTF-8 character is split.
#pragma once

#include "dataset/text_encoding.h"

#include <string>
#include <string_view>

namespace vesk {

class short_text {
public:
  static constexpr std::size_t max_size = 255;

  short_text() = default;
  short_text(std::string_view text) : text_(text.substr(0, whole_characters(text, max_size))) {}
  short_text(const std::string& text) : short_text(std::string_view(text)) {}
  short_text(const char* text) : short_text(std::string_view(text)) {}

  const std::string& str() const { return text_; }
  const char* c_str() const { return text_.c_str(); }
  std::size_t size() const { return text_.size(); }
  bool empty() const { return text_.empty(); }
  operator std::string_view() const { return text_; }

  friend bool operator==(const short_text&, const short_text&) = default;
  friend bool operator==(const short_text& a, const char* b) { return a.text_ == b; }

private:
  std::string text_;
};

} // namespace vesk
