// Finds a keyword's position with a perfect hash computed at program start.
//
// A keyword has at most 16 bytes, so it fits in two words, padded with zeros. One multiplication gives the only
// position that the keyword can have; the caller compares the two words with the keyword at that position. So an
// unknown name is rejected as fast as a known one is found.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vesk {

// A keyword padded with zeros, byte i of the text in bits 8i to 8i+7 of its word.
struct padded_keyword {
  std::uint64_t low = 0;
  std::uint64_t high = 0;

  static constexpr std::size_t max_size = 16;

  // The input of the hash.
  constexpr std::uint64_t folded() const { return low ^ high; }

  friend constexpr bool operator==(const padded_keyword&, const padded_keyword&) = default;
};

// A text longer than 16 bytes gives the empty keyword, which is in no table.
constexpr padded_keyword pad(std::string_view text) {
  padded_keyword result;
  if (text.size() > padded_keyword::max_size) return result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::uint64_t byte = static_cast<unsigned char>(text[i]);
    (i < 8 ? result.low : result.high) |= byte << (i % 8 * 8);
  }
  return result;
}

template <std::size_t Count>
class keyword_index {
  static_assert(Count < 255);
  static constexpr int slot_bits = 11; // a few hundred tries find a multiplier without collisions for 157 keywords

public:
  // `names`: the keywords, all different, none empty. Results are positions in it.
  constexpr explicit keyword_index(const std::array<std::string_view, Count>& names) {
    std::uint64_t seed = 0;
    do multiplier_ = scramble(seed += 0x9e3779b97f4a7c15) | 1;
    while (!fill(names));
  }

  // The position of the keyword if it is in the table at all.
  std::size_t candidate(std::uint64_t folded) const { return positions_[slot(folded)]; }

private:
  static constexpr std::uint64_t scramble(std::uint64_t x) {
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9;
    x = (x ^ (x >> 27)) * 0x94d049bb133111eb;
    return x ^ (x >> 31);
  }

  constexpr std::size_t slot(std::uint64_t folded) const {
    return static_cast<std::size_t>((folded * multiplier_) >> (64 - slot_bits));
  }

  // Gives each keyword its slot; false if two need the same one. Free slots lead to the first keyword, which has its
  // own slot, so a name that hashes to a free slot never matches.
  constexpr bool fill(const std::array<std::string_view, Count>& names) {
    positions_.fill(0);
    std::array<bool, std::size_t{1} << slot_bits> taken{};
    for (std::size_t i = 0; i < Count; ++i) {
      const std::size_t wanted = slot(pad(names[i]).folded());
      if (taken[wanted]) return false;
      taken[wanted] = true;
      positions_[wanted] = static_cast<std::uint8_t>(i);
    }
    return true;
  }

  std::uint64_t multiplier_ = 0;
  std::array<std::uint8_t, std::size_t{1} << slot_bits> positions_{};
};

} // namespace vesk
