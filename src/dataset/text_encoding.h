// The encoding of texts in data sets, and their conversion for display.
//
// A text that is valid UTF-8 is UTF-8; any other is Windows-1252. Here every byte of Windows-1252 is mapped: the five
// unassigned ones (81, 8D, 8F, 90, 9D) are the control characters of the same number.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vesk {

// Strict: no overlong forms, no surrogates, nothing beyond U+10FFFF.
bool is_utf8(std::string_view bytes);

// Where to cut `text` so that at most `limit` bytes are left: at `limit`, or before a UTF-8 character that would be
// split there. Before that, each byte that is not UTF-8 counts as one character.
std::size_t whole_characters(std::string_view text, std::size_t limit);

std::string utf8_from_windows_1252(std::string_view bytes);

// Nothing if a character does not exist in Windows-1252. `text` must be valid UTF-8.
std::optional<std::string> windows_1252_from_utf8(std::string_view text);

// A text of a data set as UTF-8, for display.
std::string shown_text(std::string_view bytes);

// The same for a line on a terminal or in a log. Otherwise a text from a file, an argument or an engine could send
// commands to the terminal, fake lines or reverse its letters. Control characters become "\x1b", bidirectional controls
// "\u202e", a line end "\n"; tabs are kept. Every print and every log line goes through this function.
std::string printable_text(std::string_view bytes);

// The first character of `text`, which must be valid UTF-8 and not empty, and its length in bytes.
struct character_at_front {
  char32_t character;
  std::size_t length;
};
character_at_front first_character(std::string_view text);

// C0, DEL, C1 and the bidirectional controls.
bool is_control(char32_t character);

} // namespace vesk
