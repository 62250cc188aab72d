#include "query/sources/text/csv_rows.h"

#include <cstring>

namespace vesk {

csv_rows::csv_rows(text_stream text, char separator, std::uint64_t start)
    : text_(std::move(text)), next_(text_.begin()), end_(text_.end()), separator_(separator), start_(start) {}

bool csv_rows::next() {
  while (true) {
    const char* const row = next_;
    if (row < end_) next_ = take_row(row);
    if (next_ == end_ && !text_.is_complete()) { // the row may continue after the text in memory
      if (static_cast<std::size_t>(end_ - row) > longest_row) {
        note(open_mark_ ? fault_kind::mark_closed_late : fault_kind::long_row, open_mark_ ? open_mark_ : row);
        next_ = end_ = row; // the rest is not read
        return false;
      }
      start_ = offset_of(row);
      text_.read_on(row);
      next_ = text_.begin();
      end_ = text_.end();
      continue;
    }
    if (row == end_) return false;
    offset_ = offset_of(row);
    if (open_mark_) note(fault_kind::unclosed_mark, open_mark_);
    if (size_ > 1 || fields_.front().begin != fields_.front().end) return true;
  }
}

// Reads the fields of the row that begins here; returns the start of the next row.
const char* csv_rows::take_row(const char* at) {
  const char* const end = end_;
  const char separator = separator_;
  size_ = 0;
  open_mark_ = nullptr;
  while (true) {
    while (at < end && *at == ' ') ++at;
    const char* stop = at;
    if (at < end && *at == '"') {
      stop = take_quoted(at);
    } else {
      while (stop < end && *stop != separator && *stop != '\n' && *stop != '\r') ++stop;
      const char* last = stop;
      while (last > at && last[-1] == ' ') --last;
      add(at, last, false);
    }
    if (size_ > most_fields) --size_;
    if (stop == end) return end;
    at = stop + 1;
    if (*stop == separator) {
      if (at < end) continue;
      add(end, end, false); // a separator at the very end
      return at;
    }
    return *stop == '\r' && at < end && *at == '\n' ? at + 1 : at;
  }
}

// Returns the end of the field: a separator, a line end or the end of the text.
const char* csv_rows::take_quoted(const char* at) {
  const char* const mark = at++;
  bool doubled = false;
  while (true) {
    at = at < end_ ? static_cast<const char*>(std::memchr(at, '"', static_cast<std::size_t>(end_ - at))) : nullptr;
    if (!at) {
      open_mark_ = mark;
      add(mark + 1, end_, doubled);
      return end_;
    }
    if (at + 1 == end_ || at[1] != '"') break;
    doubled = true;
    at += 2;
  }
  const char* stop = at + 1;
  while (stop < end_ && *stop == ' ') ++stop;
  if (stop == end_ || *stop == separator_ || *stop == '\n' || *stop == '\r') {
    add(mark + 1, at, doubled);
    return stop;
  }
  // Text after the closing mark belongs to the field.
  while (stop < end_ && *stop != separator_ && *stop != '\n' && *stop != '\r') ++stop;
  const char* last = stop;
  while (last[-1] == ' ') --last;
  add(mark + 1, last, true);
  return stop;
}

std::string_view csv_rows::text(std::size_t position, std::string& room) const {
  const auto& [begin, end, has_marks] = fields_[position];
  const std::string_view raw(begin, static_cast<std::size_t>(end - begin));
  if (!has_marks) return raw;
  room.clear();
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '"') { // a doubled one becomes one, a single one is dropped
      if (i + 1 == raw.size() || raw[i + 1] != '"') continue;
      ++i;
    }
    room += raw[i];
  }
  return room;
}

} // namespace vesk
