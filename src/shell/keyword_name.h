// Reads the keyword out of a call's name.
#pragma once

#include "shell/keyword_index.h"

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

// The same in one load where the machine can. False when it cannot here: then the bytes must be gone through.
// `text` is NUL-terminated.
[[gnu::always_inline]] inline bool load_keyword_at_once(const char* text, padded_keyword& keyword) {
#ifdef VESK_WIDE_NAMES
  constexpr std::uintptr_t smallest_page = 4096;
  if (reinterpret_cast<std::uintptr_t>(text) % smallest_page > smallest_page - padded_keyword::max_size) [[unlikely]]
    return false;
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
  const auto ends = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())));
  // Ones, then zeros: read from 16 - n on it keeps n bytes.
  alignas(32) static constexpr std::uint8_t mask[32] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                                        0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
  int length = std::countr_zero(ends | 0x10000u);
  if (length == 16 && text[16] != '\0') length = 0; // longer than any keyword
  const __m128i kept = _mm_and_si128(bytes, _mm_loadu_si128(reinterpret_cast<const __m128i*>(mask + 16 - length)));
  keyword = {static_cast<std::uint64_t>(_mm_cvtsi128_si64(kept)),
             static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(kept, kept)))};
#else
  keyword = load_keyword(text);
#endif
  return true;
}

} // namespace vesk
