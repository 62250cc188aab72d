#include "dataset/any_case.h"

#include "dataset/text_encoding.h"
#include "dataset/utf8.h"
#include "platform/letter_case.h"

#include <algorithm>
#include <locale.h>
#include <wctype.h>

namespace vesk {

namespace {

bool is_ascii(std::string_view text) {
  return std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

// The program runs in the "C" locale, which knows no letters beyond ASCII; this one has all, and is part of the C
// library's package. Without it such letters stay as they are.
char32_t capital(char32_t letter) {
  static const locale_t all_letters = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return all_letters ? static_cast<char32_t>(towupper_l(static_cast<wint_t>(letter), all_letters)) : letter;
}

} // namespace

std::string in_capitals(std::string_view text) {
  if (is_ascii(text)) return upper_case(text);
  const std::string utf8 = shown_text(text);
  std::string result;
  result.reserve(utf8.size());
  for (std::string_view rest = utf8; !rest.empty();) {
    const auto [character, length] = first_character(rest);
    append_utf8(result, capital(character));
    rest.remove_prefix(length);
  }
  return result;
}

bool equal_names(std::string_view a, std::string_view b) {
  return is_ascii(a) && is_ascii(b) ? equal_in_any_case(a, b) : in_capitals(a) == in_capitals(b);
}

} // namespace vesk
