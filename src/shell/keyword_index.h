// Finds a keyword's position by a perfect hash that is worked out when the program is compiled.
//
// A keyword has at most 16 bytes, so two words hold it, padded with zeros. One multiplication picks a slot, one
// comparison of both words confirms it: an unknown name is turned away as fast as a known one is found.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vesk {

// A keyword padded with zeros, byte i of the text in bits 8i to 8i+7 of its word.
struct padded_keyword {
  std::uint64_t low = 0;
  std::uint64_t high = 0;

  static constexpr std::size_t max_size = 16;

  friend constexpr bool operator==(const padded_keyword&, const padded_keyword&) = default;
};

// A text longer than 16 bytes gives the empty keyword, which no table holds.
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
  static constexpr int slot_bits = 11; // some hundred tries find a multiplier without collisions for 157 keywords
  static constexpr std::size_t slots = std::size_t{1} << slot_bits;

public:
  static constexpr std::size_t not_found = Count;

  // `names`: the keywords, all different; the position in it is what `find` answers.
  constexpr explicit keyword_index(const std::array<std::string_view, Count>& names) {
    for (std::size_t i = 0; i < Count; ++i) keywords_[i] = pad(names[i]);
    std::uint64_t seed = 0;
    do multiplier_ = scramble(seed += 0x9e3779b97f4a7c15) | 1;
    while (!fill());
  }

  std::size_t find(const padded_keyword& keyword) const {
    const std::size_t position = positions_[slot(keyword)];
    return keywords_[position] == keyword ? position : not_found;
  }

private:
  static constexpr std::uint64_t scramble(std::uint64_t x) {
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9;
    x = (x ^ (x >> 27)) * 0x94d049bb133111eb;
    return x ^ (x >> 31);
  }

  constexpr std::size_t slot(const padded_keyword& keyword) const {
    return static_cast<std::size_t>(((keyword.low ^ std::rotl(keyword.high, 29)) * multiplier_) >> (64 - slot_bits));
  }

  // Gives each keyword its slot; false when two of them want the same one.
  constexpr bool fill() {
    positions_.fill(static_cast<std::uint8_t>(Count));
    for (std::size_t i = 0; i < Count; ++i) {
      std::uint8_t& position = positions_[slot(keywords_[i])];
      if (position != Count) return false;
      position = static_cast<std::uint8_t>(i);
    }
    return true;
  }

  std::uint64_t multiplier_ = 0;
  std::array<padded_keyword, Count + 1> keywords_{}; // the last one, empty, stands behind all free slots
  std::array<std::uint8_t, slots> positions_{};
};

} // namespace vesk
