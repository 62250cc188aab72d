#include "script/words.h"

#include "core/errors.h"

#include <array>
#include <charconv>
#include <cmath>

namespace reference_engine {

namespace {

// Windows-1252 from 0x80 to 0x9f; its other bytes equal their code points (Unicode's CP1252.TXT). Unassigned bytes map
// to the control characters of the same number.
constexpr std::array<char32_t, 32> windows_1252 = {0x20ac, 0x81,   0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                                   0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8d,   0x017d, 0x8f,
                                                   0x90,   0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                                   0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x9d,   0x017e, 0x0178};

void append_utf8(std::string& out, char32_t code) {
  const auto byte = [&out](char32_t value) { out += static_cast<char>(static_cast<unsigned char>(value)); };
  if (code < 0x80) return byte(code);
  if (code < 0x800) {
    byte(0xc0 | code >> 6);
  } else {
    if (code < 0x10000) {
      byte(0xe0 | code >> 12);
    } else {
      byte(0xf0 | code >> 18);
      byte(0x80 | (code >> 12 & 0x3f));
    }
    byte(0x80 | (code >> 6 & 0x3f));
  }
  byte(0x80 | (code & 0x3f));
}

// Length of the valid UTF-8 sequence at the start of a text, 0 if there is none (RFC 3629: no overlong forms, no
// surrogates).
std::size_t utf8_length(std::string_view text) {
  const auto at = [&](std::size_t k) { return k < text.size() ? static_cast<unsigned char>(text[k]) : 0u; };
  const auto follows = [&](std::size_t k) { return (at(k) & 0xc0) == 0x80; };
  const unsigned first = at(0), second = at(1);
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first < 0xe0) return follows(1) ? 2 : 0;
  if (first >= 0xe0 && first < 0xf0) {
    if (!follows(1) || !follows(2)) return 0;
    return (first == 0xe0 && second < 0xa0) || (first == 0xed && second >= 0xa0) ? 0 : 3;
  }
  if (first >= 0xf0 && first < 0xf5) {
    if (!follows(1) || !follows(2) || !follows(3)) return 0;
    return (first == 0xf0 && second < 0x90) || (first == 0xf4 && second >= 0x90) ? 0 : 4;
  }
  return 0;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = utf8_length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string as_utf8(std::string_view bytes) {
  if (is_utf8(bytes)) return std::string(bytes);
  std::string out;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    append_utf8(out, byte >= 0x80 && byte < 0xa0 ? windows_1252[byte - 0x80u] : byte);
  }
  return out;
}

// Reads one JSON string (RFC 8259), beginning after its opening quote, and moves `rest` past its closing one.
class StringReader {
public:
  explicit StringReader(std::string_view& rest) : rest_(rest) {}

  std::string read() {
    std::string out;
    for (;;) {
      const char c = take();
      if (c == '"') return out;
      if (c == '\\')
        append_escaped(out);
      else if (static_cast<unsigned char>(c) < 0x20)
        throw InputError("a text contains a control character");
      else
        out += c;
    }
  }

private:
  char take() {
    if (rest_.empty()) throw InputError("a text has no closing quote");
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  void append_escaped(std::string& out) {
    switch (const char c = take()) {
    case '"':
    case '\\':
    case '/': out += c; return;
    case 'b': out += '\b'; return;
    case 'f': out += '\f'; return;
    case 'n': out += '\n'; return;
    case 'r': out += '\r'; return;
    case 't': out += '\t'; return;
    case 'u': return append_utf8(out, code_point());
    default: throw InputError("a text contains an escape that JSON does not have");
    }
  }

  char32_t code_point() {
    const char32_t first = four_digits();
    if (first == 0) throw InputError("a text contains a null character");
    if (first < 0xd800 || first >= 0xe000) return first;
    if (first >= 0xdc00 || take() != '\\' || take() != 'u') throw InputError("a text contains half a surrogate pair");
    const char32_t second = four_digits();
    if (second < 0xdc00 || second >= 0xe000) throw InputError("a text contains half a surrogate pair");
    return 0x10000 + ((first - 0xd800) << 10) + (second - 0xdc00);
  }

  char32_t four_digits() {
    std::array<char, 4> digits{take(), take(), take(), take()};
    std::uint32_t code = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (error != std::errc() || end != digits.data() + digits.size())
      throw InputError("a text contains \\u without four hexadecimal digits");
    return code;
  }

  std::string_view& rest_;
};

template <class Number>
void append_digits(std::string& line, Number number) {
  std::array<char, 32> digits;
  line.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

template <class Number>
std::optional<Number> parse(const Word& word) {
  if (word.quoted) return {};
  Number number{};
  const char* const end = word.text.data() + word.text.size();
  const auto result = std::from_chars(word.text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return {};
  return number;
}

constexpr bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

} // namespace

void append_number(std::string& line, std::int32_t number) {
  append_digits(line, number);
}
void append_number(std::string& line, float number) {
  append_digits(line, number);
}

void append_text(std::string& line, std::string_view bytes) {
  constexpr std::string_view hexadecimal = "0123456789abcdef";
  line += '"';
  for (const char c : as_utf8(bytes)) {
    if (c == '"' || c == '\\') line += '\\';
    if (const auto byte = static_cast<unsigned char>(c); byte < 0x20) {
      line += "\\u00";
      line += hexadecimal[byte >> 4];
      line += hexadecimal[byte & 15u];
    } else {
      line += c;
    }
  }
  line += '"';
}

std::vector<Word> split_line(std::string_view rest) {
  std::vector<Word> words;
  while (!rest.empty()) {
    if (is_blank(rest.front())) {
      rest.remove_prefix(1);
    } else if (rest.front() == '#') {
      break;
    } else if (rest.front() == '"') {
      rest.remove_prefix(1);
      words.push_back({StringReader(rest).read(), true});
    } else {
      const std::size_t end = std::min(rest.find_first_of(" \t\r#\""), rest.size());
      words.push_back({std::string(rest.substr(0, end))});
      rest.remove_prefix(end);
    }
  }
  return words;
}

std::optional<std::int32_t> parse_integer(const Word& word) {
  return parse<std::int32_t>(word);
}
std::optional<float> parse_real(const Word& word) {
  const auto number = parse<float>(word);
  return number && std::isfinite(*number) ? number : std::nullopt;
}

} // namespace reference_engine
