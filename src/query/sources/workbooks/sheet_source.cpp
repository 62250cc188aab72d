#include "query/sources/workbooks/sheet_source.h"

#include "query/sources/text/date_text.h"

#include <algorithm>
#include <cmath>

namespace vesk {

void sheet_source::add_sheet(std::string name) {
  if (tables_.size() == most_sheets) fail("", "it has more than " + std::to_string(most_sheets) + " sheets.");
  tables_.push_back(std::move(name));
}

void sheet_source::check_length(std::string_view text) const {
  const auto starts_character = [](char byte) { return (byte & 0xc0) != 0x80; };
  if (text.size() > longest_text &&
      std::count_if(text.begin(), text.end(), starts_character) > static_cast<std::ptrdiff_t>(longest_text))
    fail("", "a text in it is longer than " + std::to_string(longest_text) + " characters.");
}

std::string_view sheet_source::keep_within(std::string_view text, std::size_t most) {
  if (texts_size_ + text.size() > most) fail("", "its texts take more than " + std::to_string(most >> 20) + " MB.");
  texts_size_ += text.size();
  return texts_.keep(text);
}

void sheet_source::add_shared_text(std::string_view text) {
  check_length(text);
  texts_size_ += sizeof(std::string_view); // texts may be empty
  shared_texts_.push_back(keep_within(text, most_shared_texts));
}

std::string_view sheet_source::keep(std::string_view text) {
  return keep_within(text, most_texts);
}

std::string_view sheet_source::keep_text_of_cell(std::string_view text) {
  check_length(text);
  return keep(text);
}

double workbook_dates::number(double cell) const {
  constexpr double from_1904_on = 1462;
  if (!std::isfinite(cell)) return cell;
  if (from_1904) return to_milliseconds(cell + from_1904_on);
  return to_milliseconds(cell >= 1 && cell < 60 ? cell + 1 : cell);
}

bool is_date_format(std::string_view format) {
  for (std::size_t i = 0; i < format.size() && format[i] != ';'; ++i) {
    switch (format[i]) {
    case '\\':
    case '_':
    case '*': ++i; break;
    case '"': i = std::min(format.find('"', i + 1), format.size()); break;
    case '[': {
      const std::size_t end = std::min(format.find(']', i), format.size());
      const std::string_view inside = format.substr(i + 1, end - i - 1);
      if (!inside.empty() && inside.find_first_not_of("hHmMsS") == inside.npos) return true;
      i = end;
      break;
    }
    case 'd':
    case 'D':
    case 'm':
    case 'M':
    case 'y':
    case 'Y':
    case 'h':
    case 'H':
    case 's':
    case 'S': return true;
    default: break;
    }
  }
  return false;
}

bool is_date_format(unsigned built_in) {
  return (built_in >= 14 && built_in <= 22) || (built_in >= 27 && built_in <= 36) ||
         (built_in >= 45 && built_in <= 47) || (built_in >= 50 && built_in <= 58);
}

} // namespace vesk
