// Converts texts in the code pages of older programs to UTF-8.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace vesk {

bool is_ascii(std::string_view bytes);

class code_page {
public:
  // The code page with a number: 437, 850 and others of DOS, 620 for the Polish Mazovia, 1250 to 1258, the double-byte
  // ones 932, 936, 949 and 950, 1200 and 1201 for UTF-16 in either byte order, 28591 to 28606 for ISO 8859-1 to
  // 8859-16, 65001 for UTF-8. nullptr if the system does not know it. The result is valid until the program ends. Any
  // thread.
  static const code_page* find(unsigned number);

  // Bytes without a character become the control character of the same number in a single-byte code page and U+FFFD in
  // the others.
  std::string utf8(std::string_view bytes) const;

  unsigned number() const { return number_; }

private:
  explicit code_page(unsigned number) : number_(number) {}
  bool fill();

  unsigned number_;
  bool single_byte_ = false;
  std::string name_;                    // the system's name for it
  std::array<std::string, 256> single_; // the character for each byte of a single-byte code page
};

} // namespace vesk
