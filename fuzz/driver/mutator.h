// Changes inputs at random; the same seed gives the same changes.
#pragma once

#include <cstdint>
#include <string>

namespace vesk::fuzz {

class mutator {
public:
  explicit mutator(std::uint64_t seed) : state_(seed * 2 + 1) {}

  // A number below `limit`, which is not 0.
  std::size_t below(std::size_t limit);

  // Makes a few changes; `other` is an input to take pieces from. The result is at most `largest` long.
  void change(std::string& input, const std::string& other, std::size_t largest);

private:
  void change_once(std::string& input, const std::string& other);
  void change_bytes(std::string& input);
  void change_number(std::string& input);
  void change_digits(std::string& input);
  void copy_piece(std::string& input, const std::string& from);
  bool use_comparison(std::string& input);

  std::uint64_t state_;
};

} // namespace vesk::fuzz
