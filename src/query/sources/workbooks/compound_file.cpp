#include "query/sources/workbooks/compound_file.h"

#include "platform/little_endian.h"
#include "query/sources/bytes/byte_view.h"

#include <algorithm>
#include <cstring>

namespace vesk {

namespace {

constexpr std::uint64_t longest_list = std::uint64_t{16} << 20; // of streams or of their small sectors, in bytes

constexpr std::uint32_t largest_sector = 0xfffffffa; // larger numbers are markers: end of a chain, free and so on

// A stream in the file, as runs of consecutive sectors.
class stream_in_sectors : public byte_source {
public:
  struct run {
    std::uint64_t begin; // in the stream; it ends where the next run begins
    std::uint64_t place; // in the file
  };

  stream_in_sectors(const byte_source& file, std::vector<run> runs, std::uint64_t size)
      : byte_source(file.name(), size), file_(file), runs_(std::move(runs)) {}

private:
  void fetch(std::uint64_t offset, char* to, std::size_t size) const override {
    auto next = std::upper_bound(runs_.begin(), runs_.end(), offset,
                                 [](std::uint64_t at, const run& r) { return at < r.begin; });
    while (size > 0) {
      const run& in = *(next - 1);
      const std::uint64_t end = next == runs_.end() ? this->size() : next->begin;
      const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(size, end - offset));
      file_.read(in.place + (offset - in.begin), to, piece);
      offset += piece;
      to += piece;
      size -= piece;
      ++next;
    }
  }

  const byte_source& file_;
  const std::vector<run> runs_;
};

// A small stream, kept in memory.
class stream_in_memory : public byte_source {
public:
  stream_in_memory(const std::string& name, std::string content)
      : byte_source(name, content.size()), content_(std::move(content)) {}

private:
  void fetch(std::uint64_t offset, char* to, std::size_t size) const override { content_.copy(to, size, offset); }

  const std::string content_;
};

} // namespace

compound_file::compound_file(const byte_source& bytes) : bytes_(bytes) {
  constexpr std::size_t header_size = 512;
  const std::string beginning =
      bytes.text(0, static_cast<std::size_t>(std::min<std::uint64_t>(header_size, bytes.size())));
  const byte_view header(std::as_bytes(std::span(beginning)), bytes.name());
  const auto shift = header.number<std::uint16_t>(30), small_shift = header.number<std::uint16_t>(32);
  if ((shift != 9 && shift != 12) || small_shift != 6) fail("the header of the compound file is damaged.");
  sector_size_ = std::size_t{1} << shift;
  small_limit_ = header.number<std::uint32_t>(56);
  constexpr std::uint64_t largest_file = std::uint64_t{4} << 30, largest_small_limit = 1 << 16; // real ones have 4,096
  if (small_limit_ > largest_small_limit) fail("the header of the compound file is damaged.");
  if (bytes.size() > largest_file) fail("it is larger than 4 GB, the limit for this kind of workbook.");
  read_allocation_table(header);
  read_directory(header);
}

void compound_file::fail(std::string cause) const {
  throw table_source_exception(bytes_.name(), "", "", std::move(cause));
}

std::uint64_t compound_file::place_of(std::uint32_t sector) const {
  const std::uint64_t place = (std::uint64_t{sector} + 1) * sector_size_;
  if (sector > largest_sector || place >= bytes_.size())
    fail("sector " + std::to_string(sector) + " of the compound file is missing.");
  return place;
}

std::size_t compound_file::size_of_sector(std::uint64_t place) const {
  return static_cast<std::size_t>(std::min<std::uint64_t>(sector_size_, bytes_.size() - place));
}

std::string compound_file::sector(std::uint32_t number) const {
  const std::uint64_t place = place_of(number);
  return bytes_.text(place, size_of_sector(place));
}

void compound_file::read_allocation_table(const byte_view& header) {
  constexpr std::size_t in_header = 109;
  std::vector<std::uint32_t> table_sectors;
  for (std::size_t i = 0; i < in_header; ++i) table_sectors.push_back(header.number<std::uint32_t>(76 + 4 * i));
  const std::uint64_t sectors = bytes_.size() / sector_size_;
  std::uint32_t more = header.number<std::uint32_t>(68);
  for (std::size_t n = 0; more <= largest_sector; ++n) {
    const std::string list = sector(more);
    if (n > sectors || list.size() < sector_size_) fail("the sector lists of the compound file are damaged.");
    for (std::size_t i = 0; i + 4 <= list.size(); i += 4)
      table_sectors.push_back(little_endian<std::uint32_t>(list.data() + i));
    more = table_sectors.back(); // the last entry is the position of the next list
    table_sectors.pop_back();
  }
  for (const std::uint32_t table_sector : table_sectors) {
    if (table_sector > largest_sector || next_.size() > sectors) continue;
    const std::string part = sector(table_sector);
    const std::size_t old = next_.size();
    next_.resize(old + sector_size_ / 4, 0xffffffff);
    std::memcpy(next_.data() + old, part.data(), part.size() / 4 * 4);
  }
}

std::vector<std::uint32_t> compound_file::chain(const std::vector<std::uint32_t>& table, std::uint32_t first) const {
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t at = first; at <= largest_sector; at = table[at]) {
    if (at >= table.size()) fail("sector " + std::to_string(at) + " of the compound file is missing.");
    if (numbers.size() == table.size()) fail("the sectors of the compound file form a loop.");
    numbers.push_back(at);
  }
  return numbers;
}

// At most `size` bytes.
std::string compound_file::read_chain(std::uint32_t first, std::uint64_t size) const {
  std::string content;
  for (const std::uint32_t number : chain(next_, first)) {
    const std::string part = sector(number);
    content += part.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(part.size(), size - content.size())));
    if (content.size() == size) break;
  }
  return content;
}

void compound_file::read_directory(const byte_view& header) {
  constexpr std::size_t entry_size = 128;
  const std::string directory = read_chain(header.number<std::uint32_t>(48), longest_list);
  const byte_view list(std::as_bytes(std::span(directory)), bytes_.name());
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
  const std::string small_table = read_chain(header.number<std::uint32_t>(60), longest_list);
  next_small_.resize(small_table.size() / 4);
  if (!next_small_.empty()) std::memcpy(next_small_.data(), small_table.data(), next_small_.size() * 4);
}

std::unique_ptr<byte_source> compound_file::content(const entry& e) const {
  if (e.size > bytes_.size()) fail("a stream of " + std::to_string(e.size) + " bytes is larger than the file.");
  if (e.size < small_limit_ && !e.is_root) return std::make_unique<stream_in_memory>(bytes_.name(), small_content(e));
  std::vector<stream_in_sectors::run> runs;
  std::uint64_t size = 0, next_place = 0;
  for (const std::uint32_t number : chain(next_, e.start)) {
    if (size == e.size) break;
    const std::uint64_t place = place_of(number);
    if (place != next_place) runs.push_back({size, place});
    const std::size_t part = size_of_sector(place);
    size += std::min<std::uint64_t>(part, e.size - size);
    next_place = place + part;
  }
  return std::make_unique<stream_in_sectors>(bytes_, std::move(runs), size);
}

// Small streams are stored in the stream of the root, in small sectors.
std::string compound_file::small_content(const entry& e) const {
  const auto root = std::find_if(entries_.begin(), entries_.end(), [](const entry& other) { return other.is_root; });
  if (root == entries_.end()) fail("the compound file has no root.");
  const std::unique_ptr<byte_source> small = content(*root);
  std::string result;
  for (const std::uint32_t number : chain(next_small_, e.start)) {
    const std::uint64_t offset = std::uint64_t{number} * small_sector_size_;
    if (offset >= small->size()) fail("a small sector of the compound file is missing.");
    result += small->text(
        offset, static_cast<std::size_t>(std::min<std::uint64_t>(small_sector_size_, small->size() - offset)));
    if (result.size() >= e.size) break;
  }
  if (result.size() > e.size) result.resize(static_cast<std::size_t>(e.size));
  return result;
}

bool compound_file::has(std::string_view stream) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const entry& e) { return equal_ignoring_case(e.name, stream); });
}

std::unique_ptr<byte_source> compound_file::stream(std::initializer_list<std::string_view> names) const {
  for (const std::string_view name : names)
    for (const entry& e : entries_)
      if (!e.is_root && equal_ignoring_case(e.name, name)) {
        auto result = content(e);
        if (result->size() < e.size)
          fail("stream " + e.name + " has only " + std::to_string(result->size()) + " of its " +
               std::to_string(e.size) + " bytes.");
        return result->size() == 0 ? nullptr : std::move(result);
      }
  return nullptr;
}

} // namespace vesk
