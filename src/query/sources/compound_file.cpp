#include "query/sources/compound_file.h"

#include <algorithm>

namespace vesk {

namespace {

constexpr std::uint32_t largest_sector = 0xfffffffa; // larger numbers are marks: end of a chain, free and so on

} // namespace

compound_file::compound_file(byte_view bytes, const std::string& name) : bytes_(bytes), name_(&name) {
  const auto shift = bytes_.number<std::uint16_t>(30), small_shift = bytes_.number<std::uint16_t>(32);
  if ((shift != 9 && shift != 12) || small_shift != 6) fail("the header of the compound file is damaged.");
  sector_size_ = std::size_t{1} << shift;
  small_limit_ = bytes_.number<std::uint32_t>(56);
  read_allocation_table();
  read_directory();
}

std::string_view compound_file::sector(std::uint32_t number) const {
  const std::size_t offset = (std::size_t{number} + 1) * sector_size_;
  if (number > largest_sector || offset >= bytes_.size())
    fail("sector " + std::to_string(number) + " of the compound file is missing.");
  return bytes_.text(offset, std::min(sector_size_, bytes_.size() - offset)); // the last one may be cut
}

void compound_file::read_allocation_table() {
  constexpr std::size_t in_header = 109;
  std::vector<std::uint32_t> table_sectors;
  for (std::size_t i = 0; i < in_header; ++i) table_sectors.push_back(bytes_.number<std::uint32_t>(76 + 4 * i));
  const std::size_t sectors = bytes_.size() / sector_size_;
  std::uint32_t more = bytes_.number<std::uint32_t>(68);
  for (std::size_t n = 0; more <= largest_sector; ++n) {
    const std::string_view list = sector(more);
    if (n > sectors || list.size() < sector_size_) fail("the sector lists of the compound file are damaged.");
    std::uint32_t number = 0;
    for (std::size_t i = 0; i + 4 <= list.size(); i += 4) {
      std::memcpy(&number, list.data() + i, 4);
      table_sectors.push_back(number);
    }
    table_sectors.pop_back(); // the last is the place of the next list
    more = number;
  }
  for (const std::uint32_t table_sector : table_sectors) {
    if (table_sector > largest_sector || next_.size() > sectors) continue;
    const std::string_view part = sector(table_sector);
    const std::size_t old = next_.size();
    next_.resize(old + sector_size_ / 4, 0xffffffff);
    std::memcpy(next_.data() + old, part.data(), part.size() / 4 * 4);
  }
}

std::vector<std::uint32_t> compound_file::chain(const std::vector<std::uint32_t>& table, std::uint32_t first) const {
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t at = first; at <= largest_sector; at = table[at]) {
    if (at >= table.size()) fail("sector " + std::to_string(at) + " of the compound file is missing.");
    if (numbers.size() == table.size()) fail("the sectors of the compound file follow each other in a circle.");
    numbers.push_back(at);
  }
  return numbers;
}

// At most `size` bytes.
std::vector<std::byte> compound_file::read_chain(std::uint32_t first, std::uint64_t size) const {
  std::vector<std::byte> content;
  for (const std::uint32_t number : chain(next_, first)) {
    const std::string_view part = sector(number);
    const auto* const from = reinterpret_cast<const std::byte*>(part.data());
    content.insert(content.end(), from, from + std::min<std::uint64_t>(part.size(), size - content.size()));
    if (content.size() == size) break;
  }
  return content;
}

void compound_file::read_directory() {
  constexpr std::size_t entry_size = 128;
  const auto directory = read_chain(bytes_.number<std::uint32_t>(48), bytes_.size());
  const byte_view list(directory, *name_);
  for (std::size_t at = 0; at + entry_size <= list.size(); at += entry_size) {
    constexpr std::uint8_t stream = 2, root = 5;
    const auto kind = list.number<std::uint8_t>(at + 66);
    if (kind != stream && kind != root) continue;
    const std::size_t name_size = std::min<std::size_t>(list.number<std::uint16_t>(at + 64), 64);
    std::string name;
    for (std::size_t i = 0; i + 2 < name_size; i += 2) name += list.text(at + i, 1);
    const auto size = sector_size_ == 512 ? list.number<std::uint32_t>(at + 120) : list.number<std::uint64_t>(at + 120);
    entries_.push_back({name, list.number<std::uint32_t>(at + 116), size, kind == root});
  }
  const auto small_table = read_chain(bytes_.number<std::uint32_t>(60), bytes_.size());
  next_small_.resize(small_table.size() / 4);
  if (!next_small_.empty()) std::memcpy(next_small_.data(), small_table.data(), next_small_.size() * 4);
}

std::vector<std::byte> compound_file::content(const entry& e) const {
  if (e.size > bytes_.size()) fail("a stream of " + std::to_string(e.size) + " bytes is larger than the file.");
  if (e.size >= small_limit_ || e.is_root) return read_chain(e.start, e.size);
  const auto root = std::find_if(entries_.begin(), entries_.end(), [](const entry& other) { return other.is_root; });
  if (root == entries_.end()) fail("the compound file has no root.");
  const std::vector<std::byte> small = content(*root);
  std::vector<std::byte> result;
  for (const std::uint32_t number : chain(next_small_, e.start)) {
    const std::size_t offset = std::size_t{number} * small_sector_size_;
    if (offset >= small.size()) fail("a small sector of the compound file is missing.");
    const std::size_t end = std::min(offset + small_sector_size_, small.size());
    result.insert(result.end(), small.begin() + static_cast<std::ptrdiff_t>(offset),
                  small.begin() + static_cast<std::ptrdiff_t>(end));
  }
  if (result.size() > e.size) result.resize(e.size);
  return result;
}

bool compound_file::has(std::string_view stream) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const entry& e) { return equal_ignoring_case(e.name, stream); });
}

std::vector<std::byte> compound_file::stream(std::initializer_list<std::string_view> names) const {
  for (const std::string_view name : names)
    for (const entry& e : entries_)
      if (!e.is_root && equal_ignoring_case(e.name, name)) {
        auto result = content(e);
        if (result.size() < e.size)
          fail("stream " + e.name + " has only " + std::to_string(result.size()) + " of its " + std::to_string(e.size) +
               " bytes.");
        return result;
      }
  return {};
}

} // namespace vesk
