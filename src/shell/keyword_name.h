// Reads the keyword out of a call's name.
#pragma once

#include "shell/keyword_index.h"

#include <cstdint>
#include <cstring>

// Sixteen bytes at once, past the terminator but never past the page. Sanitizers would rightly ask what we do there.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define VESK_SANITIZED 1
#endif
#endif
#if defined(__SSE2__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(VESK_SANITIZED)
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

// The first 16 bytes of the same in one register, and zeros from the terminator on. Not every text can be loaded so;
// `text` is NUL-terminated. The call of a handler waits for all this, so few operations depend on each other.
class wide_keyword {
public:
  // Sixteen bytes from `text` on lie in memory that is there.
  static bool can_load(const char* text) {
    constexpr std::uintptr_t smallest_page = 4096;
    return reinterpret_cast<std::uintptr_t>(text) % smallest_page <= smallest_page - padded_keyword::max_size;
  }
  explicit wide_keyword(const char* text) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const __m128i ends = _mm_cmpeq_epi8(bytes, _mm_setzero_si128()), ones = _mm_set1_epi8(-1);
    // In each half all bits up to the lowest one of the first end; all of them without an end.
    const __m128i in_half = _mm_xor_si128(ends, _mm_add_epi64(ends, ones));
    // The topmost bit of the lower half, which is set without an end alone, over the upper half.
    const __m128i goes_on = _mm_shuffle_epi32(_mm_srai_epi32(in_half, 31), _MM_SHUFFLE(1, 1, 1, 1));
    const __m128i in_text = _mm_or_si128(goes_on, _mm_set_epi64x(0, -1));
    bytes_ = _mm_and_si128(_mm_and_si128(bytes, in_half), in_text);
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
