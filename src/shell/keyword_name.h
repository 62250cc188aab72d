// Reads the keyword out of a call's name.
#pragma once

#include "shell/keyword_index.h"

#include <bit>
#include <cstdint>

// Sixteen bytes at once, past the terminator but never past the page. Sanitizers would rightly ask what we do there.
#if defined(__SSE2__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define VESK_WIDE_NAMES 1
#include <emmintrin.h>
#endif

namespace vesk {

// The keyword of up to 16 bytes at `text`, byte by byte; a longer one gives the empty keyword.
inline padded_keyword load_keyword(const char* text) {
  padded_keyword result;
  for (unsigned i = 0; i < padded_keyword::max_size; ++i) {
    if (text[i] == '\0') return result;
    const std::uint64_t byte = static_cast<unsigned char>(text[i]);
    (i < 8 ? result.low : result.high) |= byte << (i % 8 * 8);
  }
  return text[padded_keyword::max_size] == '\0' ? result : padded_keyword{};
}

#ifdef VESK_WIDE_NAMES

// The same in one register. Not every text can be loaded so; `text` is NUL-terminated.
class wide_keyword {
public:
  // Sixteen bytes from `text` on lie in memory that is there.
  static bool can_load(const char* text) {
    constexpr std::uintptr_t smallest_page = 4096;
    return reinterpret_cast<std::uintptr_t>(text) % smallest_page <= smallest_page - padded_keyword::max_size;
  }
  explicit wide_keyword(const char* text) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const auto ends = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())));
    int size = std::countr_zero(ends | 0x10000u);
    if (ends == 0 && text[padded_keyword::max_size] != '\0') size = 0; // longer than any keyword
    // Ones, then zeros: read from 16 - size on they keep so many bytes.
    alignas(32) static constexpr std::uint8_t mask[32] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                                          0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    bytes_ = _mm_and_si128(bytes, _mm_loadu_si128(reinterpret_cast<const __m128i*>(mask + 16 - size)));
  }

  std::uint64_t folded() const {
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_xor_si128(bytes_, _mm_unpackhi_epi64(bytes_, bytes_))));
  }
  friend bool operator==(const wide_keyword& a, const padded_keyword& b) {
    const __m128i other = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&b));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(a.bytes_, other)) == 0xffff;
  }

private:
  __m128i bytes_;
};

#else

class wide_keyword : public padded_keyword {
public:
  static bool can_load(const char*) { return true; }
  explicit wide_keyword(const char* text) : padded_keyword(load_keyword(text)) {}
};

#endif

} // namespace vesk
