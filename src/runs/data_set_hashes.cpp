#include "runs/data_set_hashes.h"

#include "dataset/vki_writer.h"
#include "runs/sha256.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace vesk {

namespace {

struct collected_list {
  std::string name;
  std::vector<sha256::digest_bytes> records;
};

// Visits a data set in file order. The fields of a record go into one hash; lists within records are collected
// separately.
class hashing_visitor : public vki_writer<sha256> {
public:
  hashing_visitor(sha256& hash, std::vector<collected_list>& lists, std::string owner = {})
      : vki_writer(hash, 0), hash_(hash), lists_(lists), owner_(std::move(owner)) {}

  void header(const std::uint32_t&) {} // of the file, not of its content
  void section(int, const char* name, const auto& member) { whole(name, member); }
  void points_section(int, const char* name, const stored_series& series) { whole(name, series.points); }
  void query_section(int, const char* name, const stored_series& series) { whole(name, series.query); }

  using vki_writer::field;
  template <class Record>
  void field(const char* name, const shared_list<Record>& list) {
    const std::string full_name = owner_.empty() ? name : owner_ + "." + name;
    if (find(full_name) == lists_.size()) lists_.push_back({full_name, {}});
    const std::size_t at = find(full_name); // an index: lists within the records may grow `lists_`
    for (const Record& record : list) {
      sha256 hash;
      hashing_visitor visitor(hash, lists_, full_name);
      if constexpr (std::is_same_v<Record, short_text>)
        visitor.field(name, record);
      else
        layout<Record>::fields(visitor, record);
      lists_[at].records.push_back(hash.digest());
    }
  }

private:
  void whole(const char* name, const auto& member) { field(name, member), end_member(name); }
  template <class Record>
  void whole(const char* name, const shared_list<Record>& list) {
    field(name, list);
  }
  void end_member(const char* name) { lists_.push_back({name, {hash_.digest()}}); }
  std::size_t find(const std::string& name) const {
    return static_cast<std::size_t>(std::ranges::find(lists_, name, &collected_list::name) - lists_.begin());
  }

  sha256& hash_;
  std::vector<collected_list>& lists_;
  std::string owner_;
};

list_hashes in_text(const collected_list& list) {
  list_hashes result{list.name, list.records.size(), {}};
  if (list.records.size() <= data_set_hashes::most_records) {
    for (const auto& digest : list.records) result.hashes.push_back(hexadecimal(digest, data_set_hashes::digits));
    return result;
  }
  sha256 hash;
  for (const auto& digest : list.records) hash.number(digest);
  result.hashes.push_back(hexadecimal(hash.digest(), data_set_hashes::digits));
  return result;
}

// The names of records in messages.
struct list_words {
  std::string_view name, one, many;
};
constexpr list_words words[] = {
    {"segments", "segment", "segments"},
    {"time_functions", "time function", "time functions"},
    {"constant_groups", "constant group", "constant groups"},
    {"constant_groups.constants", "constant", "constants"},
    {"systems", "system", "systems"},
    {"systems.loads", "load", "loads"},
    {"systems.boundaries", "boundary", "boundaries"},
    {"parameters", "parameter", "parameters"},
    {"exchange_fields", "exchange field", "exchange fields"},
    {"exchange_fields.functions", "exchange function", "exchange functions"},
    {"flow_fields", "flow field", "flow fields"},
    {"flow_fields.functions", "flow function", "flow functions"},
    {"output_controls", "output", "outputs"},
    {"project_files", "project file", "project files"},
};

std::string words_for(const std::string& name, std::size_t count, bool all) {
  const auto known = std::ranges::find(words, name, &list_words::name);
  if (known != std::end(words))
    return all ? std::string(known->many)
               : std::to_string(count) + " " + std::string(count == 1 ? known->one : known->many);
  std::string plain = name;
  std::ranges::replace(plain, '_', ' ');
  std::ranges::replace(plain, '.', ' ');
  return plain;
}

// Counts records that are in one list only, regardless of order: an inserted record does not count those after it.
std::size_t differences(const list_hashes& a, const list_hashes& b) {
  std::map<std::string_view, long> surplus;
  for (const std::string& hash : a.hashes) ++surplus[hash];
  for (const std::string& hash : b.hashes) --surplus[hash];
  std::size_t more = 0, less = 0;
  for (const auto& [hash, count] : surplus) (count > 0 ? more : less) += static_cast<std::size_t>(std::abs(count));
  return std::max(more, less);
}

} // namespace

data_set_hashes hashes_of(const prevesk_dataset_data_type& data) {
  std::vector<collected_list> lists;
  sha256 hash;
  hashing_visitor visitor(hash, lists);
  layout<prevesk_dataset_data_type>::fields(visitor, data);
  data_set_hashes result;
  for (const collected_list& list : lists) {
    hash.bytes(list.name);
    for (const auto& digest : list.records) hash.number(digest);
    result.lists.push_back(in_text(list));
  }
  result.sha256 = hexadecimal(hash.digest());
  return result;
}

std::string changes_in_words(const data_set_hashes& before, const data_set_hashes& now) {
  std::vector<std::string> changes;
  for (const list_hashes& list : now.lists) {
    const auto old = std::ranges::find(before.lists, list.name, &list_hashes::name);
    if (old == before.lists.end() || list == *old) continue;
    const bool all = list.one_for_all() || old->one_for_all();
    const std::size_t count = all ? 1 : differences(*old, list);
    changes.push_back(count == 0 ? "the order of " + words_for(list.name, 0, true) : words_for(list.name, count, all));
  }
  std::string text;
  for (std::size_t i = 0; i < changes.size(); ++i)
    text += (i == 0 ? "" : i + 1 == changes.size() ? " and " : ", ") + changes[i];
  return text;
}

} // namespace vesk
