// Splits delimited text into rows and fields.
//
// A field in quotation marks may contain separators and line ends, and a doubled mark means one; a mark inside an
// unquoted field is an ordinary character. Blanks around unquoted fields are dropped, as are empty lines. A line ends
// at a line feed, a carriage return, or both.
#pragma once

#include "query/sources/text/text_stream.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class csv_rows {
public:
  static constexpr std::size_t most_fields = 1 << 16; // in one row; further ones are ignored

  static constexpr std::size_t longest_row = std::size_t{4} << 20; // in bytes

  // `start`: the offset of the stream in the whole text.
  csv_rows(text_stream text, char separator, std::uint64_t start = 0);

  // Moves to the next row that is not empty; false at the end, and if `fault` reports a row that is too long. Throws
  // table_source_exception if the text cannot be read.
  bool next();

  // Of the current row.
  std::size_t size() const { return size_; }
  std::uint64_t offset() const { return offset_; }             // of its first byte in the text
  std::uint64_t end_offset() const { return offset_of(end_); } // of the text read so far

  // A field's text. `room` is used if quotation marks have to be removed.
  std::string_view text(std::size_t position, std::string& room) const;

  // The fault in the text so far, and its position: a quotation mark that is never closed, or not within the longest
  // row, or the beginning of a row that is too long.
  enum class fault_kind { none, unclosed_mark, mark_closed_late, long_row };
  fault_kind fault() const { return fault_; }
  std::uint64_t fault_offset() const { return fault_offset_; }

private:
  struct field {
    const char* begin;
    const char* end;
    bool has_marks; // it contains quotation marks that are not part of the text
  };

  void add(const char* first, const char* last, bool has_marks) {
    if (size_ == fields_.size()) fields_.resize(2 * size_ + 16);
    fields_[size_++] = {first, last, has_marks};
  }
  const char* take_row(const char* at);
  const char* take_quoted(const char* at);
  std::uint64_t offset_of(const char* place) const {
    return start_ + static_cast<std::uint64_t>(place - text_.begin());
  }
  void note(fault_kind fault, const char* place) {
    if (fault_ != fault_kind::none) return;
    fault_ = fault;
    fault_offset_ = offset_of(place);
  }

  text_stream text_;
  const char* next_;
  const char* end_;
  const char* open_mark_ = nullptr; // of the current row, if the text in memory does not close it
  char separator_;
  std::uint64_t start_; // of the text in memory
  std::uint64_t offset_ = 0, fault_offset_ = 0;
  fault_kind fault_ = fault_kind::none;
  std::vector<field> fields_; // the first `size_` are those of the current row
  std::size_t size_ = 0;
};

} // namespace vesk
