// The bytes of the data layer's texts, and what they mean to a reader.
//
// A text is UTF-8 where it is valid UTF-8, and Windows-1252 otherwise. Windows-1252 is taken here with every byte
// mapped: the five bytes that it leaves open (81, 8D, 8F, 90, 9D) are the control characters of the same number.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vesk {

// Valid in the strict sense: no overlong forms, no surrogates, nothing beyond U+10FFFF.
bool is_utf8(std::string_view bytes);

// Where to cut `text` so that at most `limit` bytes are left: at `limit`, or before the UTF-8 character that would be
// split there. Bytes that are not UTF-8 up to that character are one character each.
std::size_t whole_characters(std::string_view text, std::size_t limit);

std::string utf8_from_windows_1252(std::string_view bytes);

// Nothing when a character has no byte in Windows-1252. `text` must be valid UTF-8.
std::optional<std::string> windows_1252_from_utf8(std::string_view text);

// A text of the data layer as UTF-8, for showing it.
std::string shown_text(std::string_view bytes);

// The same for a line on a terminal or in a log, where a text from a file, an argument or an engine could else command
// the terminal, forge lines or show its letters in another order. Control characters become "\x1b", those of the order
// of letters "\u202e", a line end "\n"; tabs stay. Every print and every log line goes through it.
std::string printable_text(std::string_view bytes);

// The first character of `text`, which must be valid UTF-8 and not empty, and its length in bytes.
struct character_at_front {
  char32_t character;
  std::size_t length;
};
character_at_front first_character(std::string_view text);

// C0, DEL, C1 and the characters that change the order of letters.
bool is_control(char32_t character);

} // namespace vesk
