#include "mutator.h"

#include "coverage.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vesk::fuzz {

namespace {

constexpr std::array<std::int64_t, 22> telling_numbers = {
    0,     1,      -1,    2,     7,          16,          127,        128,        255,     256,     512,
    32767, -32768, 65535, 65536, 0x7fffffff, -0x7fffffff, 0x80000000, 0xffffffff, 1 << 24, 1 << 30, INT64_MIN};

constexpr std::array<const char*, 14> telling_texts = {
    "-1",    "0",      "1", "255", "65536", "2147483647", "4294967296", "99999999999999999999",
    "1e308", "1e-320", ".", "-",   "nan",   "10000000"};

void put_number(std::string& input, std::size_t at, std::uint64_t number, std::size_t size, bool big_endian) {
  std::array<char, 8> bytes;
  std::memcpy(bytes.data(), &number, sizeof number);
  if (big_endian) std::reverse(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
  std::memcpy(input.data() + at, bytes.data(), size);
}

} // namespace

std::size_t mutator::below(std::size_t limit) { // splitmix64
  std::uint64_t z = state_ += 0x9e3779b97f4a7c15U;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
  return (z ^ (z >> 31)) % limit;
}

void mutator::change(std::string& input, const std::string& other, std::size_t largest) {
  for (std::size_t changes = 1 + below(below(3) == 0 ? 12 : 3); changes > 0; --changes) change_once(input, other);
  if (input.size() > largest) input.resize(largest);
}

void mutator::change_once(std::string& input, const std::string& other) {
  if (input.empty()) return copy_piece(input, other);
  switch (below(12)) {
  case 0:
  case 1: return change_bytes(input);
  case 2:
  case 3: return change_number(input);
  case 4:
  case 5: return change_digits(input);
  case 6: input.erase(below(input.size()), 1 + below(below(2) ? 8 : input.size())); return;
  case 7: copy_piece(input, input); return;
  case 8: copy_piece(input, other); return;
  case 9: input.insert(below(input.size() + 1), 1 + below(below(8) ? 4 : 300), input[below(input.size())]); return;
  default:
    if (!use_comparison(input)) change_bytes(input);
  }
}

void mutator::change_bytes(std::string& input) {
  char& byte = input[below(input.size())];
  if (below(2))
    byte = static_cast<char>(byte ^ (1 << below(8)));
  else
    byte = static_cast<char>(below(256));
}

void mutator::change_number(std::string& input) {
  const std::size_t size = std::size_t{1} << below(4);
  if (input.size() < size) return change_bytes(input);
  const std::size_t at = below(input.size() - size + 1);
  std::uint64_t number = 0;
  std::memcpy(&number, input.data() + at, size);
  number =
      below(2) ? static_cast<std::uint64_t>(telling_numbers[below(telling_numbers.size())]) : number + below(33) - 16;
  put_number(input, at, number, size, below(4) == 0);
}

// A number written in digits.
void mutator::change_digits(std::string& input) {
  const std::size_t begin = input.find_first_of("0123456789", below(input.size()));
  if (begin == input.npos) return change_bytes(input);
  const std::size_t end = std::min(input.find_first_not_of("0123456789", begin), input.size());
  input.replace(begin, end - begin, telling_texts[below(telling_texts.size())]);
}

// Into a place of its own or over what stands there.
void mutator::copy_piece(std::string& input, const std::string& from) {
  if (from.empty()) return;
  const std::size_t begin = below(from.size());
  const std::string piece =
      from.substr(begin, 1 + below(std::min<std::size_t>(from.size() - begin, below(4) ? 32 : 4096)));
  const std::size_t at = below(input.size() + 1);
  input.replace(at, below(2) ? 0 : piece.size(), piece);
}

// Where one of two numbers stands that were compared, the other one is put.
bool mutator::use_comparison(std::string& input) {
  comparison found = comparisons[below(comparison_count)];
  if (found.size < 2 || input.size() < found.size) return false;
  if (below(2)) std::swap(found.left, found.right);
  for (const bool big_endian : {false, true}) {
    std::string wanted(found.size, '\0');
    put_number(wanted, 0, found.left, found.size, big_endian);
    std::size_t at = input.find(wanted, below(input.size()));
    if (at == input.npos) at = input.find(wanted);
    if (at == input.npos) continue;
    put_number(input, at, found.right + below(3) - 1, found.size, big_endian);
    return true;
  }
  return false;
}

} // namespace vesk::fuzz
