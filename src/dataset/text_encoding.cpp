#include "dataset/text_encoding.h"

#include "dataset/utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace vesk {

namespace {

// The characters of bytes 80 to 9F; every other byte is the character of the same number.
constexpr char32_t upper_controls[] = {0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                       0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008d, 0x017d, 0x008f,
                                       0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                       0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};
static_assert(std::size(upper_controls) == 32);

constexpr char32_t invalid = 0xffffffff;

// Takes one character off the front of `bytes`; on `invalid` it does not change them.
char32_t next_character(std::string_view& bytes) {
  const auto lead = static_cast<std::uint8_t>(bytes.front());
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xc0 ? 0
                             : lead < 0xe0 ? 2
                             : lead < 0xf0 ? 3
                             : lead < 0xf8 ? 4
                                           : 0;
  if (length == 0 || length > bytes.size()) return invalid;
  char32_t character = length == 1 ? lead : lead & (0x7fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<std::uint8_t>(bytes[i]);
    if ((byte & 0xc0) != 0x80) return invalid;
    character = character << 6 | (byte & 0x3f);
  }
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000}; // by length: a smaller character is an overlong form
  if (character < smallest[length] || character > 0x10ffff || (character >= 0xd800 && character < 0xe000))
    return invalid;
  bytes.remove_prefix(length);
  return character;
}

} // namespace

bool is_utf8(std::string_view bytes) {
  while (!bytes.empty())
    if (next_character(bytes) == invalid) return false;
  return true;
}

std::size_t whole_characters(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  std::size_t start = limit; // of the character that the cut would split
  while (start > 0 && limit - start < 3 && (static_cast<std::uint8_t>(text[start]) & 0xc0) == 0x80) --start;
  std::string_view rest = text.substr(start);
  const bool splits = start < limit && next_character(rest) != invalid && text.size() - rest.size() > limit;
  return splits && is_utf8(text.substr(0, start)) ? start : limit;
}

std::string utf8_from_windows_1252(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    append_utf8(text, byte >= 0x80 && byte < 0xa0 ? upper_controls[byte - 0x80] : byte);
  }
  return text;
}

std::optional<std::string> windows_1252_from_utf8(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const char32_t character = next_character(text);
    const auto* upper = std::find(std::begin(upper_controls), std::end(upper_controls), character);
    if (upper != std::end(upper_controls))
      bytes += static_cast<char>(0x80 + (upper - std::begin(upper_controls)));
    else if (character < 0x80 || (character >= 0xa0 && character <= 0xff))
      bytes += static_cast<char>(character);
    else
      return std::nullopt;
  }
  return bytes;
}

std::string shown_text(std::string_view bytes) {
  return is_utf8(bytes) ? std::string(bytes) : utf8_from_windows_1252(bytes);
}

character_at_front first_character(std::string_view text) {
  std::string_view rest = text;
  const char32_t character = next_character(rest);
  return {character, text.size() - rest.size()};
}

bool is_control(char32_t character) {
  const auto lies = [character](char32_t first, char32_t last) { return character >= first && character <= last; };
  return character < 0x20 || lies(0x7f, 0x9f) || character == 0x061c || lies(0x200e, 0x200f) || lies(0x202a, 0x202e) ||
         lies(0x2066, 0x2069);
}

std::string printable_text(std::string_view bytes) {
  std::string text = shown_text(bytes);
  const auto is_plain = [](char c) { return (c >= 0x20 && c < 0x7f) || c == '\t'; };
  if (std::all_of(text.begin(), text.end(), is_plain)) return text; // true for almost all texts
  std::string result;
  for (std::string_view rest = text; !rest.empty();) {
    const auto [character, length] = first_character(rest);
    const std::string_view piece = rest.substr(0, rest.starts_with("\r\n") ? 2 : length);
    if (piece == "\n" || piece == "\r\n") {
      result += "\\n";
    } else if (is_control(character) && character != '\t') {
      char escape[8];
      std::snprintf(escape, sizeof escape, character < 0x100 ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(character));
      result += escape;
    } else {
      result += piece;
    }
    rest.remove_prefix(piece.size());
  }
  return result;
}

} // namespace vesk
