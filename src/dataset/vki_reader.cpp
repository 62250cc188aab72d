#include "dataset/vki_reader.h"

#include "dataset/vki_layout.h"
#include "platform/counted.h"
#include "platform/memory_arena.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace vesk {

namespace {

// The visitor that computes the minimum size of a record in files of one version.
class smallest_record : public versioned {
public:
  using versioned::versioned;

  template <class Record>
  static std::size_t size(std::uint32_t version) {
    smallest_record visitor(version);
    if constexpr (std::is_same_v<Record, short_text>)
      return sizeof(std::uint32_t);
    else {
      const Record record{};
      layout<Record>::fields(visitor, record);
    }
    return visitor.size_;
  }

  void field(const char*, const bool&) { size_ += 1; }
  void field(const char*, const std::uint32_t&) { size_ += sizeof(std::uint32_t); }
  void field(const char*, const std::int32_t&) { size_ += sizeof(std::int32_t); }
  void field(const char*, const double&) { size_ += sizeof(double); }
  void field(const char*, const shared_value<import_query_descriptor>& query) {
    layout<import_query_descriptor>::fields(*this, *query);
  }
  template <class TextOrList>
  void field(const char*, const TextOrList&) {
    size_ += sizeof(std::uint32_t); // its length or count
  }
  void retired_text(const char*) { size_ += sizeof(std::uint32_t); }

private:
  std::size_t size_ = 0;
};

// The visitor that reads.
class vki_reader : public versioned {
public:
  vki_reader(binary_reader& file, vki_facts& facts)
      : versioned(facts.version), file_(file), facts_(facts), arena_(memory_arena::create(file.size())) {}
  ~vki_reader() { arena_->release(); } // the arrays in it keep it alive
  vki_reader(const vki_reader&) = delete;
  vki_reader& operator=(const vki_reader&) = delete;

  // Notes the current section as the last one, unless none of it was read.
  void note_section() {
    if (file_.position() == section_offset_) return;
    facts_.last_section = file_.section();
    facts_.last_section_offset = section_offset_;
  }

  void header(std::uint32_t& file_version) {
    file_version = version();
    if (!from(0x00070005)) return;
    facts_.project_files_offset = file_.number<std::uint32_t>("project_files offset");
    facts_.header_zero = file_.number<std::uint32_t>("zero");
  }

  void section(int number, const char* name, auto& member) {
    enter(number, name);
    field(name, member);
  }
  void points_section(int number, const char* name, stored_series& series) {
    enter(number, name);
    field("points", series.points);
  }
  void query_section(int number, const char* name, stored_series& series) {
    enter(number, name);
    field("query", series.query);
  }

  void retired_queries(int number, const char* name) {
    enter(number, name);
    const std::uint32_t queries = count("queries", smallest_record::size<import_query_descriptor>(version()));
    import_query_descriptor dropped;
    for (std::uint32_t i = 0; i < queries; ++i) layout<import_query_descriptor>::fields(*this, dropped);
    retired_text("text");
  }
  void retired_text(const char*) { file_.skip(count("text", 1)); }

  void field(const char* name, bool& value) { value = file_.number<std::uint8_t>(name) != 0; }
  void field(const char* name, std::uint32_t& value) { value = file_.number<std::uint32_t>(name); }
  void field(const char* name, std::int32_t& value) { value = file_.number<std::int32_t>(name); }
  void field(const char* name, double& value) { value = file_.number<double>(name); }

  void field(const char*, std::string& text) {
    text.resize(count("text", 1));
    file_.copy(text.data(), text.size());
  }
  void field(const char* name, short_text& text) {
    const std::uint32_t length = count("text", 1);
    // Some bytes more than fit, to see whether the cut would split a character.
    const std::uint32_t taken = std::min<std::uint32_t>(length, short_text::max_size + 3);
    text = std::string_view(file_.piece(taken, name), taken);
    file_.skip(length - taken);
  }

  void field(const char*, shared_value<import_query_descriptor>& query) {
    static const import_query_descriptor untouched;
    import_query_descriptor read;
    layout<import_query_descriptor>::fields(*this, read);
    query = read == untouched ? shared_value<import_query_descriptor>() : shared_value(std::move(read));
  }
  void field(const char* name, std::vector<query_condition>& conditions) {
    const std::uint32_t wanted = count(name, smallest_record::size<query_condition>(version()));
    conditions.clear();
    for (std::uint32_t i = 0; i < wanted; ++i) layout<query_condition>::fields(*this, conditions.emplace_back());
  }

  // Points and pairs have the same layout in memory as in the file.
  template <class T>
  void field(const char* name, shared_array<T>& array) {
    const std::uint32_t size = count(name, sizeof(T));
    array = shared_array<T>::uninitialized(*arena_, size);
    if (size > 0) file_.copy_array(array.edit_data(), size * sizeof(T));
  }

  template <class Record>
  void field(const char* name, segment_item_list<Record>& items) {
    using payload = typename Record::payload;
    constexpr std::size_t item_size = sizeof(std::uint32_t) + sizeof(payload);
    const std::uint32_t size = count(name, item_size);
    auto values = shared_array<payload>::uninitialized(*arena_, size);
    payload* value = values.edit_data();
    isc_.resize(size);
    for (std::uint32_t done = 0; done < size;) {
      const std::size_t ready = std::clamp<std::size_t>(file_.at_hand() / item_size, 1, items_at_once);
      const auto items_here = std::min(size - done, static_cast<std::uint32_t>(ready));
      const char* item = file_.piece(items_here * item_size, name);
      for (std::uint32_t i = done; i < done + items_here; ++i, item += item_size) {
        isc_[i] = little_endian<std::uint32_t>(item);
        std::memcpy(static_cast<void*>(value + i), item + sizeof(std::uint32_t), sizeof(payload));
      }
      done += items_here;
    }
    items = segment_item_list<Record>(shared_numbers(last_isc<Record>()), std::move(values));
  }

  // Records are appended as they are read, so that memory grows with the bytes read, not with the count announced.
  template <class Record>
  void field(const char* name, shared_list<Record>& list) {
    const std::uint32_t wanted = count(name, smallest_record::size<Record>(version()));
    list.clear();
    for (std::uint32_t i = 0; i < wanted; ++i) {
      const std::uint64_t begin = file_.position();
      list.push_back({});
      try {
        if constexpr (std::is_same_v<Record, short_text>)
          field(name, list.edit_back());
        else
          layout<Record>::fields(*this, list.edit_back());
      } catch (const data_file_exception&) {
        if (file_.position() == begin) list.erase(i); // none of it was read
        throw;
      }
    }
  }

private:
  static constexpr std::size_t items_at_once = binary_reader::longest_piece / 32;

  void enter(int number, const char* name) {
    note_section();
    file_.enter({number, name});
    section_offset_ = file_.position();
  }

  // A count of elements of at least `smallest` bytes each (1 for text), checked against the rest of the file. `what`
  // names them in the message if they do not fit.
  std::uint32_t count(const char* what, std::size_t smallest) {
    const std::uint64_t place = file_.position();
    const auto announced = file_.number<std::uint32_t>(what);
    const std::uint64_t possible = file_.left() / smallest;
    if (announced <= possible) return announced;
    if (version() > prevesk_dataset_data_type::current_file_version()) return static_cast<std::uint32_t>(possible);
    file_.fail_short(place, smallest == 1 ? counted(announced, "byte") + " of " + what
                                          : std::to_string(announced) + " " + what);
  }

  // The numbers just read; allocates memory only if they differ from the previous segment's.
  const shared_array<std::uint32_t>& shared_numbers(shared_array<std::uint32_t>& last) {
    if (std::equal(last.begin(), last.end(), isc_.begin(), isc_.end())) return last;
    last = shared_array<std::uint32_t>::uninitialized(*arena_, isc_.size());
    if (!isc_.empty()) std::memcpy(last.edit_data(), isc_.data(), isc_.size() * sizeof(std::uint32_t));
    return last;
  }
  template <class Record>
  shared_array<std::uint32_t>& last_isc() {
    if constexpr (std::is_same_v<Record, segment_parameter_data_record_type>)
      return last_parameter_isc_;
    else
      return last_system_isc_;
  }

  binary_reader& file_;
  vki_facts& facts_;
  memory_arena* arena_;
  std::uint64_t section_offset_ = 0;
  std::vector<std::uint32_t> isc_; // of the items just read
  shared_array<std::uint32_t> last_parameter_isc_, last_system_isc_;
};

bool is_version(std::uint32_t number) {
  return number >= lowest_file_version && number <= highest_file_version;
}

std::uint32_t read_version(binary_reader& file) {
  const auto version = file.number<std::uint32_t>("version");
  if (is_version(version)) return version;
  char cause[64];
  std::snprintf(cause, sizeof cause, "not a data file: unknown version 0x%08x.", version);
  file.fail(0, cause);
}

} // namespace

bool may_be_data_file(std::string_view first_bytes) {
  if (first_bytes.size() < sizeof(std::uint32_t)) return true; // too few bytes to decide
  return is_version(little_endian<std::uint32_t>(first_bytes.data()));
}

vki_facts read_vki(binary_reader& file, prevesk_dataset_data_type& data) {
  vki_facts facts;
  data.file_version = facts.version = read_version(file);
  vki_reader reader(file, facts);
  // Even after an exception no thread may write into arrays that the caller then frees.
  struct last_write {
    binary_reader& file;
    ~last_write() { file.drop(); }
  } const last_write{file};
  try {
    layout<prevesk_dataset_data_type>::fields(reader, data);
  } catch (const data_file_exception&) {
    if (facts.version <= prevesk_dataset_data_type::current_file_version()) throw;
    // A newer version may end differently: everything read so far is kept.
  }
  reader.note_section();
  file.finish();
  return facts;
}

reading_losses prevesk_dataset_data_type::read(binary_reader& file) {
  reading_losses losses;
  const vki_facts facts = read_vki(file, *this);
  if (facts.version > current_file_version()) {
    losses.newer_version = facts.version;
    losses.bytes_not_read = file.left();
  }
  file_version = std::max(file_version, current_file_version());
  if (!catalogue()) return losses;
  const model_lists stored = lists_of_model(); // without the segments, which are many and changed in place
  refresh_from_catalogue(true);
  losses.model_is_unknown = !catalogue()->find_model(model_type);
  losses.note_dropped(stored, lists_of_model());
  return losses;
}

} // namespace vesk
