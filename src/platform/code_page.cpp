#include "platform/code_page.h"

#include "platform/little_endian.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iconv.h>
#include <map>
#include <memory>
#include <mutex>

namespace vesk {

namespace {

class converter {
public:
  explicit converter(const std::string& name) : state_(iconv_open("UTF-8", name.c_str())) {}
  ~converter() {
    if (is_open()) iconv_close(state_);
  }
  converter(const converter&) = delete;
  converter& operator=(const converter&) = delete;

  bool is_open() const { return reinterpret_cast<std::intptr_t>(state_) != -1; }

  // Converts as much as possible from the front of `bytes`, appends it and removes it. False at bytes that are not a
  // character.
  bool append(std::string_view& bytes, std::string& text) const {
    while (!bytes.empty()) {
      char room[1024];
      char* to = room;
      char* from = const_cast<char*>(bytes.data());
      std::size_t left = bytes.size(), space = sizeof room;
      const bool failed = iconv(state_, &from, &left, &to, &space) == std::size_t(-1) && errno != E2BIG;
      text.append(room, static_cast<std::size_t>(to - room));
      bytes.remove_prefix(bytes.size() - left);
      if (failed) return false;
    }
    return true;
  }

private:
  iconv_t state_;
};

constexpr unsigned mazovia = 620;

std::string system_name(unsigned number) {
  switch (number) {
  case 1200: return "UTF-16LE";
  case 1201: return "UTF-16BE";
  case 65001: return "UTF-8";
  case 10000: return "MACINTOSH";
  case mazovia: return "CP437"; // except for its Polish letters
  default: break;
  }
  constexpr unsigned iso_8859 = 28590;
  return number > iso_8859 && number <= iso_8859 + 16 ? "ISO-8859-" + std::to_string(number - iso_8859)
                                                      : "CP" + std::to_string(number);
}

// Letters of a code page that the system's converter does not have.
struct mazovia_letter {
  unsigned char byte;
  const char* utf8;
};
constexpr mazovia_letter mazovia_letters[] = {
    {0x86, "ą"}, {0x8d, "ć"}, {0x8f, "Ą"},  {0x90, "Ę"}, {0x91, "ę"}, {0x92, "ł"},
    {0x95, "Ć"}, {0x98, "Ś"}, {0x9b, "zł"}, {0x9c, "Ł"}, {0x9e, "ś"}, {0xa0, "Ź"},
    {0xa1, "Ż"}, {0xa3, "Ó"}, {0xa4, "ń"},  {0xa5, "Ń"}, {0xa6, "ź"}, {0xa7, "ż"},
};

// The most common double-byte code page, without the system's converter, which takes long to set up.
void append_utf16(std::string_view bytes, std::string& text) {
  const auto unit = [&](std::size_t i) { return char32_t{little_endian<char16_t>(bytes.data() + i)}; };
  const auto part = [](char32_t first, char32_t bits) { return static_cast<char>(first | (bits & 0x3f)); };
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t c = unit(i);
    if (c >= 0xd800 && c < 0xe000) {
      const char32_t low = c < 0xdc00 && i + 3 < bytes.size() ? unit(i + 2) : 0;
      const bool is_pair = low >= 0xdc00 && low < 0xe000;
      c = is_pair ? 0x10000 + ((c - 0xd800) << 10) + (low - 0xdc00) : 0xfffd;
      if (is_pair) i += 2;
    }
    if (c < 0x80) {
      text += static_cast<char>(c);
    } else if (c < 0x800) {
      text += {static_cast<char>(0xc0 | c >> 6), part(0x80, c)};
    } else if (c < 0x10000) {
      text += {static_cast<char>(0xe0 | c >> 12), part(0x80, c >> 6), part(0x80, c)};
    } else {
      text += {static_cast<char>(0xf0 | c >> 18), part(0x80, c >> 12), part(0x80, c >> 6), part(0x80, c)};
    }
  }
}

bool is_single_byte(unsigned number) {
  return number != 932 && number != 936 && number != 949 && number != 950 && number != 1200 && number != 1201 &&
         number != 65001;
}

} // namespace

bool is_ascii(std::string_view bytes) {
  std::size_t i = 0;
  for (; i + 8 <= bytes.size(); i += 8) {
    std::uint64_t eight;
    std::memcpy(&eight, bytes.data() + i, 8);
    if (eight & 0x8080808080808080U) return false;
  }
  for (; i < bytes.size(); ++i)
    if (static_cast<unsigned char>(bytes[i]) >= 0x80) return false;
  return true;
}

const code_page* code_page::find(unsigned number) {
  static std::mutex lock;
  static std::map<unsigned, std::unique_ptr<code_page>> known; // null: the system does not know it
  const std::lock_guard guard(lock);
  auto [at, is_new] = known.try_emplace(number);
  if (is_new) {
    std::unique_ptr<code_page> page(new code_page(number));
    if (page->fill()) at->second = std::move(page);
  }
  return at->second.get();
}

bool code_page::fill() {
  name_ = system_name(number_);
  const converter to_utf8(name_);
  if (!to_utf8.is_open()) return false;
  single_byte_ = is_single_byte(number_);
  for (unsigned i = 0; single_byte_ && i < 256; ++i) {
    const char byte = static_cast<char>(i);
    std::string_view bytes(&byte, 1);
    if (!to_utf8.append(bytes, single_[i]))
      single_[i] = i < 0x80 ? std::string(1, byte)
                            : std::string{static_cast<char>(0xc0 | i >> 6), static_cast<char>(0x80 | (i & 0x3f))};
  }
  if (number_ == mazovia)
    for (const mazovia_letter& letter : mazovia_letters) single_[letter.byte] = letter.utf8;
  return true;
}

std::string code_page::utf8(std::string_view bytes) const {
  std::string text;
  if (number_ == 1200) {
    append_utf16(bytes, text);
    return text;
  }
  if (single_byte_) {
    for (const char c : bytes) text += single_[static_cast<unsigned char>(c)];
    return text;
  }
  const converter to_utf8(name_);
  const std::size_t unit = number_ == 1200 || number_ == 1201 ? 2 : 1;
  while (to_utf8.is_open() && !to_utf8.append(bytes, text)) {
    text += "\xef\xbf\xbd";
    bytes.remove_prefix(std::min(unit, bytes.size()));
  }
  return text;
}

} // namespace vesk
