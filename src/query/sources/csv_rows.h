// Text with separated fields, cut into rows and fields.
//
// A field between quotation marks may hold separators and line ends, and a doubled mark is one; a mark inside an
// unquoted field is a character like others. Blanks around unquoted fields are left out, and so are empty lines. A line
// ends at a line feed, a carriage return, or both.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class csv_rows {
public:
  static constexpr std::size_t most_fields = 1 << 16; // in one row; what follows is left out

  csv_rows(std::string_view text, char separator);

  // Goes to the next row that is not empty; false at the end.
  bool next();

  // Of the present row.
  std::size_t size() const { return size_; }
  std::size_t offset() const { return offset_; } // of its first byte in the text

  // A field's text; where its quotation marks must be taken out that is done in `room`.
  std::string_view text(std::size_t position, std::string& room) const;

  // Where a quotation mark was opened that the text never closes; npos if there is none so far.
  std::size_t unclosed() const { return unclosed_; }

private:
  struct field {
    const char* begin;
    const char* end;
    bool has_marks; // quotation marks stand in it that are not part of the text
  };

  void add(const char* first, const char* last, bool has_marks) {
    if (size_ == fields_.size()) fields_.resize(2 * size_ + 16);
    fields_[size_++] = {first, last, has_marks};
  }
  const char* take_quoted(const char* at);
  const char* take_plain(const char* at);

  const char* begin_;
  const char* next_;
  const char* end_;
  char separator_;
  std::size_t offset_ = 0;
  std::size_t unclosed_ = std::string_view::npos;
  std::vector<field> fields_; // the first `size_` are those of the present row
  std::size_t size_ = 0;
};

} // namespace vesk
