// The words of a script line: numbers that read back to the same bits, and texts as JSON strings.
#ifndef REFERENCE_ENGINE_SCRIPT_WORDS_H
#define REFERENCE_ENGINE_SCRIPT_WORDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace reference_engine {

void append_number(std::string& line, std::int32_t number);
void append_number(std::string& line, float number); // shortest form that reads back to the same float

// Quotes a text. Bytes that are not valid UTF-8 are read as Windows-1252 and written as UTF-8.
void append_text(std::string& line, std::string_view bytes);

struct Word {
  std::string text;
  bool quoted = false;
};

// Splits a line at blanks, up to a '#' outside quotes. Throws InputError, with only the cause, for a malformed string.
std::vector<Word> split_line(std::string_view line);

// Nothing if the word is not a finite number of that type, or out of its range.
std::optional<std::int32_t> parse_integer(const Word& word);
std::optional<float> parse_real(const Word& word);

} // namespace reference_engine

#endif
