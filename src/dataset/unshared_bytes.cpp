// Compares two data sets level by level: anything shared is dropped, with everything below it, so that only differing
// parts are examined. Within a level, memory is matched by address: records moved to other blocks by an insertion still
// share their arrays, which a comparison by position would miss.
#include "dataset/unshared_bytes.h"

#include "dataset/vki_layout.h"

#include <algorithm>
#include <map>
#include <vector>

namespace vesk {

namespace {

struct level;

// A list, a block of records or a query: memory that copies of a data set may share, and that refers to other memory.
struct piece {
  const void* address;
  std::size_t bytes;
  void (*open)(const void* content, level& next); // adds the memory that it refers to
  const void* content;
};

// An array. Its size is read only if it counts: a million shared arrays are never accessed.
struct array {
  const detail::array_block* address;
  std::size_t element_size; // bytes

  std::size_t bytes() const { return sizeof(detail::array_block) + std::size_t{address->capacity} * element_size; }
};

struct level {
  std::vector<piece> pieces;
  std::vector<array> arrays;
  std::size_t bytes = 0;                           // of the owners themselves, never shared
  const detail::array_block* last_numbers[2] = {}; // of parameters and systems in the previous segment
};

// Sorts by address and removes duplicates.
void sort(auto& elements) {
  const auto by_address = [](const auto& a, const auto& b) { return std::less<const void*>()(a.address, b.address); };
  std::sort(elements.begin(), elements.end(), by_address);
  const auto same = [](const auto& a, const auto& b) { return a.address == b.address; };
  elements.erase(std::unique(elements.begin(), elements.end(), same), elements.end());
}

// Calls `only_a` and `only_b` for the elements that the other side does not have. Both must be sorted.
template <class Element>
void differences(const std::vector<Element>& a, const std::vector<Element>& b, auto only_a, auto only_b) {
  auto other = b.begin();
  for (const Element& own : a) {
    for (; other != b.end() && std::less<const void*>()(other->address, own.address); ++other) only_b(*other);
    if (other != b.end() && other->address == own.address)
      ++other;
    else
      only_a(own);
  }
  for (; other != b.end(); ++other) only_b(*other);
}

std::size_t bytes_of(const std::string& text) {
  static const std::size_t inside = std::string().capacity(); // short strings use no heap memory
  return text.capacity() > inside ? text.capacity() + 1 : 0;
}

// The layout visitor that collects everything a record refers to. Members that are never stored are small and not
// counted.
class collector : public versioned {
public:
  explicit collector(level& into) : versioned(prevesk_dataset_data_type::current_file_version()), into_(into) {}

  void header(const std::uint32_t&) {}
  void section(int, const char* name, const auto& member) { field(name, member); }
  void points_section(int, const char* name, const stored_series& series) { field(name, series.points); }
  void query_section(int, const char* name, const stored_series& series) { field(name, series.query); }
  void retired_queries(int, const char*) {}
  void retired_text(const char*) {}

  void field(const char*, const bool&) {}
  void field(const char*, const std::uint32_t&) {}
  void field(const char*, const std::int32_t&) {}
  void field(const char*, const double&) {}
  void field(const char*, const std::string& text) { into_.bytes += bytes_of(text); }
  void field(const char*, const short_text& text) { into_.bytes += bytes_of(text.str()); }
  void field(const char*, const std::vector<query_condition>& conditions) {
    into_.bytes += conditions.capacity() * sizeof(query_condition);
    for (const query_condition& condition : conditions) layout<query_condition>::fields(*this, condition);
  }
  void field(const char*, const shared_value<import_query_descriptor>& query) {
    add(query, sizeof(import_query_descriptor), open_record<import_query_descriptor>);
  }
  template <class T>
  void field(const char*, const shared_array<T>& content) {
    if (content.block()) into_.arrays.push_back({content.block(), sizeof(T)});
  }
  // Almost all segments share their numbers with the previous one.
  template <class Record>
  void field(const char* name, const segment_item_list<Record>& items) {
    const detail::array_block*& last = into_.last_numbers[std::is_same_v<Record, segment_system_data_record_type>];
    if (items.isc_numbers().block() != last) field(name, items.isc_numbers());
    last = items.isc_numbers().block();
    field(name, items.values());
  }
  template <class Record>
  void field(const char*, const shared_list<Record>& list) {
    using block = typename shared_list<Record>::block;
    add(list.blocks(), list.blocks()->capacity() * sizeof(block), open_list<Record>);
  }

private:
  template <class T>
  void add(const shared_value<T>& value, std::size_t bytes, void (*open)(const void*, level&)) {
    if (value.address()) into_.pieces.push_back({value.address(), bytes, open, &*value});
  }

  template <class Record>
  static void open_record(const void* record, level& next) {
    collector into(next);
    layout<Record>::fields(into, *static_cast<const Record*>(record));
  }
  template <class Record>
  static void open_list(const void* blocks, level& next) {
    for (const auto& block : *static_cast<const std::vector<typename shared_list<Record>::block>*>(blocks))
      collector(next).add(block, block->capacity() * sizeof(Record), open_block<Record>);
  }
  template <class Record>
  static void open_block(const void* records, level& next) {
    collector into(next);
    for (const Record& record : *static_cast<const std::vector<Record>*>(records))
      if constexpr (std::is_same_v<Record, short_text>)
        into.field("", record);
      else
        layout<Record>::fields(into, record);
  }

  level& into_;
};

level top_of(const prevesk_dataset_data_type& data) {
  level top;
  collector into(top);
  layout<prevesk_dataset_data_type>::fields(into, data);
  return top;
}

bool has_array_in(const prevesk_dataset_data_type& data, const memory_arena* arena) {
  level waiting = top_of(data);
  for (;;) {
    for (const array& found : waiting.arrays)
      if (detail::arena_of(found.address) == arena) return true;
    waiting.arrays.clear();
    if (waiting.pieces.empty()) return false;
    const piece next = waiting.pieces.back();
    waiting.pieces.pop_back();
    next.open(next.content, waiting);
  }
}

} // namespace

std::size_t unshared_bytes(const prevesk_dataset_data_type& a, const prevesk_dataset_data_type& b) {
  std::size_t bytes = sizeof a;
  std::map<const memory_arena*, std::size_t> in_arenas;
  level of_a = top_of(a), of_b = top_of(b);
  while (!of_a.pieces.empty() || !of_a.arrays.empty()) {
    for (level* side : {&of_a, &of_b}) {
      sort(side->pieces);
      sort(side->arrays);
    }
    bytes += of_a.bytes;
    differences(
        of_a.arrays, of_b.arrays,
        [&](const array& own) {
          const memory_arena* const arena = detail::arena_of(own.address);
          (arena ? in_arenas[arena] : bytes) += own.bytes();
        },
        [](const array&) {});
    level below_a, below_b;
    differences(
        of_a.pieces, of_b.pieces,
        [&](const piece& own) {
          bytes += own.bytes;
          own.open(own.content, below_a);
        },
        [&](const piece& other) { other.open(other.content, below_b); });
    of_a = std::move(below_a);
    of_b = std::move(below_b);
  }
  bytes += of_a.bytes;
  for (const auto& [arena, own] : in_arenas) bytes += has_array_in(b, arena) ? own : arena->size();
  return bytes;
}

} // namespace vesk
