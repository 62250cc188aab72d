#include "query/sources/csv_rows.h"

#include <cstring>

namespace vesk {

csv_rows::csv_rows(std::string_view text, char separator)
    : begin_(text.data()), next_(begin_), end_(begin_ + text.size()), separator_(separator) {}

bool csv_rows::next() {
  while (next_ < end_) {
    size_ = 0;
    offset_ = static_cast<std::size_t>(next_ - begin_);
    while (true) {
      const char* field_start = next_;
      while (field_start < end_ && *field_start == ' ') ++field_start;
      const char* const stop = field_start < end_ && *field_start == '"' ? take_quoted(field_start) : take_plain(next_);
      if (size_ > most_fields) --size_;
      next_ = stop;
      if (stop == end_) break;
      ++next_;
      if (*stop == separator_) {
        if (next_ < end_) continue;
        add(end_, end_, false); // a separator at the very end
        break;
      }
      if (*stop == '\r' && next_ < end_ && *next_ == '\n') ++next_;
      break;
    }
    if (size_ > 1 || fields_.front().begin != fields_.front().end) return true;
  }
  return false;
}

// Both return where the field ends: at a separator, a line end or the end of the text.
const char* csv_rows::take_plain(const char* at) {
  const char* first = at;
  while (at < end_ && *at != separator_ && *at != '\n' && *at != '\r') ++at;
  const char* last = at;
  while (first < last && *first == ' ') ++first;
  while (first < last && last[-1] == ' ') --last;
  add(first, last, false);
  return at;
}

const char* csv_rows::take_quoted(const char* at) {
  const char* const mark = at++;
  bool doubled = false;
  while (true) {
    at = at < end_ ? static_cast<const char*>(std::memchr(at, '"', static_cast<std::size_t>(end_ - at))) : nullptr;
    if (!at) {
      if (unclosed_ == std::string_view::npos) unclosed_ = static_cast<std::size_t>(mark - begin_);
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
  // Something stands behind the closing mark: it belongs to the field.
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
    if (raw[i] == '"') { // a doubled one gives one, a single one goes
      if (i + 1 == raw.size() || raw[i + 1] != '"') continue;
      ++i;
    }
    room += raw[i];
  }
  return room;
}

} // namespace vesk
