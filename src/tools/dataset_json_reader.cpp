#include "dataset/text_encoding.h"
#include "tools/dataset_json.h"
#include "tools/file_version_text.h"
#include "tools/nearest_name.h"

#include <bit>
#include <bitset>
#include <charconv>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <tuple>
#include <type_traits>
#include <variant>
#include <vector>

namespace vesk {

namespace {

class json_loader;

using json_scalar = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string>;

// A place that a JSON value goes into, and how. The members that are null are what the place does not take.
struct slot_kind;
struct slot {
  void* place = nullptr;
  const slot_kind* kind = nullptr;
};
struct slot_kind {
  const char* expected;                                            // for the message, as in "a number"
  void (*take)(json_loader&, void*, json_scalar&&) = nullptr;      // a plain value
  slot (*member)(json_loader&, void*, std::string_view) = nullptr; // an object: the place of its next member
  slot (*element)(json_loader&, void*, std::size_t) = nullptr;     // an array: the place of its next element
  void (*opened)(json_loader&, void*) = nullptr;                   // before the first member or element
  void (*closed)(json_loader&, void*, std::size_t) = nullptr;      // after the last of so many
};

// What the parser's events say, led to the places that they are for.
class json_loader {
public:
  explicit json_loader(slot root) : root_(root) {}

  // The events.
  bool null() { return scalar(nullptr); }
  bool boolean(bool value) { return scalar(value); }
  bool number_integer(std::int64_t value) { return scalar(value); }
  bool number_unsigned(std::uint64_t value) { return scalar(value); }
  bool number_float(double value, const std::string&) { return scalar(value); }
  bool string(std::string& value) { return scalar(std::move(value)); }
  bool binary(std::vector<std::uint8_t>&) { return false; } // not in JSON
  bool start_object(std::size_t) { return open(next_place(), true); }
  bool start_array(std::size_t) { return open(next_place(), false); }
  bool end_object() { return close(); }
  bool end_array() { return close(); }
  bool key(std::string& name) {
    frames_.back().name = name;
    member_ = frames_.back().at.kind->member(*this, frames_.back().at.place, name);
    ++frames_.back().count;
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) {
    const std::string_view text = error.what();
    const std::size_t prefix = text.find("] "); // the library's own number of the error
    throw json_exception(std::string(text.substr(prefix == text.npos ? 0 : prefix + 2)) + ".");
  }

  [[noreturn]] void fail(const std::string& cause) const {
    const std::string where = path();
    throw json_exception(where.empty() ? cause : where + ": " + cause);
  }
  [[noreturn]] void fail_unexpected(const char* expected, const std::string& found) const {
    fail(std::string("expected ") + expected + ", found " + found + ".");
  }
  [[noreturn]] void fail_unexpected(const char* expected, const json_scalar& found) const;

  // Notes that the innermost object's member number `index` is being given.
  void note_member(std::size_t index) {
    if (frames_.back().given.test(index)) fail("given twice.");
    frames_.back().given.set(index);
  }

  // Where the item of a segment's list is put together before it joins the list.
  template <class Record>
  Record& item() {
    return std::get<Record>(items_);
  }

private:
  struct frame { // an object or array that is open
    slot at;
    bool is_object;
    std::size_t count = 0; // of the members or elements so far, the present one included
    std::string name = {}; // of the present member
    std::bitset<64> given = {};
  };

  slot next_place() {
    if (frames_.empty()) return root_;
    frame& innermost = frames_.back();
    if (innermost.is_object) return member_;
    return innermost.at.kind->element(*this, innermost.at.place, innermost.count++);
  }
  bool scalar(json_scalar&& value) {
    const slot to = next_place();
    if (!to.kind->take) fail_unexpected(to.kind->expected, value);
    to.kind->take(*this, to.place, std::move(value));
    return true;
  }
  bool open(slot to, bool is_object) {
    if (is_object ? !to.kind->member : !to.kind->element)
      fail_unexpected(to.kind->expected, std::string(is_object ? "an object" : "an array"));
    if (to.kind->opened) to.kind->opened(*this, to.place);
    frames_.push_back({to, is_object});
    return true;
  }
  bool close() {
    const frame done = std::move(frames_.back());
    frames_.pop_back();
    if (done.at.kind->closed) done.at.kind->closed(*this, done.at.place, done.count);
    return true;
  }
  std::string path() const {
    std::string result;
    for (const frame& outer : frames_) {
      if (outer.count == 0 && outer.name.empty()) break; // nothing in it yet
      if (!outer.is_object)
        result += "[" + std::to_string(outer.count - 1) + "]";
      else
        result += (result.empty() ? "" : ".") + outer.name;
    }
    return result;
  }

  slot root_;
  slot member_; // the place of the member whose name came last
  std::vector<frame> frames_;
  std::tuple<segment_parameter_data_record_type, segment_system_data_record_type> items_;
};

void json_loader::fail_unexpected(const char* expected, const json_scalar& found) const {
  struct description {
    std::string operator()(std::nullptr_t) const { return "null"; }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(std::uint64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return nlohmann::json(number).dump(); }
    std::string operator()(const std::string&) const { return "a text"; }
  };
  fail_unexpected(expected, std::visit(description{}, found));
}

// --- plain values

void take_flag(json_loader& loader, void* place, json_scalar&& value) {
  if (!std::holds_alternative<bool>(value)) loader.fail_unexpected("true or false", value);
  *static_cast<bool*>(place) = std::get<bool>(value);
}

template <class Integer>
void take_integer(json_loader& loader, void* place, json_scalar&& value) {
  using limits = std::numeric_limits<Integer>;
  const auto take = [&](auto number) {
    if (!std::in_range<Integer>(number))
      loader.fail(std::to_string(number) + " lies outside " + std::to_string(limits::min()) + " to " +
                  std::to_string(limits::max()) + ".");
    *static_cast<Integer*>(place) = static_cast<Integer>(number);
  };
  if (const auto* negative = std::get_if<std::int64_t>(&value)) return take(*negative);
  if (const auto* positive = std::get_if<std::uint64_t>(&value)) return take(*positive);
  loader.fail_unexpected("a whole number", value);
}

// What JSON has no number for.
std::optional<double> special_double(std::string_view text) {
  if (text == "inf") return std::numeric_limits<double>::infinity();
  if (text == "-inf") return -std::numeric_limits<double>::infinity();
  if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
  constexpr std::string_view other = "nan:";
  std::uint64_t bits = 0;
  if (!text.starts_with(other) || text.size() != other.size() + 16) return std::nullopt;
  const auto [end, error] = std::from_chars(text.data() + other.size(), text.data() + text.size(), bits, 16);
  const auto number = std::bit_cast<double>(bits);
  if (error != std::errc() || end != text.data() + text.size() || number == number) return std::nullopt;
  return number;
}

void take_double(json_loader& loader, void* place, json_scalar&& value) {
  double& number = *static_cast<double*>(place);
  if (const auto* d = std::get_if<double>(&value)) {
    number = *d;
  } else if (const auto* i = std::get_if<std::int64_t>(&value)) {
    number = static_cast<double>(*i);
  } else if (const auto* u = std::get_if<std::uint64_t>(&value)) {
    number = static_cast<double>(*u);
  } else {
    const auto* text = std::get_if<std::string>(&value);
    const auto special = text ? special_double(*text) : std::nullopt;
    if (!special) loader.fail_unexpected("a number", value);
    // As bits: passing a signalling not-a-number on as a number may change it.
    std::memcpy(place, &*special, sizeof number);
  }
}

void put_text(json_loader&, std::string& to, std::string&& text) {
  to = std::move(text);
}
void put_text(json_loader& loader, short_text& to, std::string&& text) {
  if (text.size() > short_text::max_size)
    loader.fail("a text of " + std::to_string(text.size()) + " bytes, but at most 255 fit here.");
  to = text;
}

template <class Text>
void take_text(json_loader& loader, void* place, json_scalar&& value) {
  auto* text = std::get_if<std::string>(&value);
  if (!text) loader.fail_unexpected("a text", value);
  put_text(loader, *static_cast<Text*>(place), std::move(*text));
}

template <class Text>
void take_windows_1252(json_loader& loader, void* place, json_scalar&& value) {
  auto* text = std::get_if<std::string>(&value);
  if (!text) loader.fail_unexpected("a text", value);
  auto bytes = windows_1252_from_utf8(*text);
  if (!bytes) loader.fail("a character that Windows-1252 does not have.");
  put_text(loader, *static_cast<Text*>(place), std::move(*bytes));
}

template <class Text>
constexpr slot_kind windows_1252_kind{.expected = "a text", .take = take_windows_1252<Text>};

template <class Text>
slot text_member(json_loader& loader, void* place, std::string_view name) {
  if (name != "windows-1252") loader.fail("no such member; the only one is windows-1252.");
  loader.note_member(0);
  return {place, &windows_1252_kind<Text>};
}

void text_closed(json_loader& loader, void*, std::size_t members) {
  if (members == 0) loader.fail_unexpected("a text", std::string("an empty object"));
}

template <class Text>
constexpr slot_kind text_kind{
    .expected = "a text", .take = take_text<Text>, .member = text_member<Text>, .closed = text_closed};

constexpr slot_kind flag_kind{.expected = "true or false", .take = take_flag};
constexpr slot_kind double_kind{.expected = "a number", .take = take_double};
template <class Integer>
constexpr slot_kind integer_kind{.expected = "a whole number", .take = take_integer<Integer>};

slot slot_for(bool& value) {
  return {&value, &flag_kind};
}
slot slot_for(double& value) {
  return {&value, &double_kind};
}
slot slot_for(std::uint32_t& value) {
  return {&value, &integer_kind<std::uint32_t>};
}
slot slot_for(std::int32_t& value) {
  return {&value, &integer_kind<std::int32_t>};
}
slot slot_for(std::string& value) {
  return {&value, &text_kind<std::string>};
}
slot slot_for(short_text& value) {
  return {&value, &text_kind<short_text>};
}
slot slot_for(point_list& points);
slot slot_for(shared_value<import_query_descriptor>& query);
slot slot_for(std::vector<query_condition>& conditions);
template <class Pair>
slot slot_for(shared_array<Pair>& pairs);
template <class Record>
slot slot_for(segment_item_list<Record>& items);
template <class Record>
slot slot_for(shared_list<Record>& records);
template <class Record>
slot record_slot(Record& record);

// --- records

// The visitor of the layout that finds a record's member by its name.
class member_finder : public versioned {
public:
  explicit member_finder(std::string_view name)
      : versioned(prevesk_dataset_data_type::current_file_version()), name_(name) {}

  void field(std::string_view name, auto& member) {
    if (name == name_) {
      found_ = slot_for(member);
      index_ = names_.size();
    }
    names_.push_back(name);
  }
  void header(std::uint32_t& file_version) { field("file_version", file_version); }
  void section(int, std::string_view name, auto& member) { field(name, member); }
  void points_section(int, std::string_view name, stored_series& series) {
    field(name.substr(0, name.find('.')), series);
  }
  void query_section(int, std::string_view, stored_series&) {} // stands with the points
  void retired_queries(int, std::string_view) {}
  void retired_text(std::string_view) {}

  slot found() const { return found_; }
  std::size_t index() const { return index_; }
  const std::vector<std::string_view>& names() const { return names_; }

private:
  static slot slot_for(auto& member) {
    if constexpr (std::is_base_of_v<stored_series, std::remove_reference_t<decltype(member)>>)
      return record_slot<stored_series>(member);
    else
      return vesk::slot_for(member);
  }

  std::string_view name_;
  slot found_;
  std::size_t index_ = 0;
  std::vector<std::string_view> names_;
};

} // namespace

// The two series of the data set's own, each of two sections in the file, are one object here.
template <>
struct layout<stored_series> {
  static void fields(auto& v, auto& r) {
    v.field("points", r.points);
    v.field("query", r.query);
  }
};

namespace {

template <class Record>
slot member_of(json_loader& loader, Record& record, std::string_view name) {
  member_finder finder(name);
  layout<Record>::fields(finder, record);
  if (!finder.found().kind)
    loader.fail("no such member; the nearest is " + std::string(nearest_name(name, finder.names())) + ".");
  loader.note_member(finder.index());
  return finder.found();
}

template <class Record>
slot record_member(json_loader& loader, void* place, std::string_view name) {
  return member_of(loader, *static_cast<Record*>(place), name);
}

template <class Record>
constexpr slot_kind record_kind{.expected = "an object", .member = record_member<Record>};

template <class Record>
slot record_slot(Record& record) {
  return {&record, &record_kind<Record>};
}

slot slot_for(shared_value<import_query_descriptor>& query) {
  return record_slot(query.edit());
}

// --- lists

template <class List>
void clear_list(json_loader&, void* place) {
  *static_cast<List*>(place) = List();
}

slot point_part(json_loader& loader, void* place, std::size_t index) {
  moment_value_pair_type& point = *static_cast<moment_value_pair_type*>(place);
  switch (index) {
  case 0: return slot_for(point.date);
  case 1: return slot_for(point.time);
  case 2: return slot_for(point.value);
  default: loader.fail("a point is [date, time, value].");
  }
}
void point_closed(json_loader& loader, void*, std::size_t parts) {
  if (parts != 3) loader.fail("a point is [date, time, value].");
}
constexpr slot_kind point_kind{.expected = "[date, time, value]", .element = point_part, .closed = point_closed};

slot next_point(json_loader&, void* place, std::size_t index) {
  point_list& points = *static_cast<point_list*>(place);
  points.push_back({moment_type(0, 0), 0.0});
  return {&points.edit(index), &point_kind};
}
constexpr slot_kind points_kind{.expected = "an array", .element = next_point, .opened = clear_list<point_list>};

slot slot_for(point_list& points) {
  return {&points, &points_kind};
}

template <class Pair>
slot next_pair(json_loader&, void* place, std::size_t index) {
  auto& pairs = *static_cast<shared_array<Pair>*>(place);
  pairs.push_back({});
  return record_slot(pairs.edit(index));
}
template <class Pair>
constexpr slot_kind pairs_kind{
    .expected = "an array", .element = next_pair<Pair>, .opened = clear_list<shared_array<Pair>>};

template <class Pair>
slot slot_for(shared_array<Pair>& pairs) {
  return {&pairs, &pairs_kind<Pair>};
}

slot next_condition(json_loader&, void* place, std::size_t) {
  return record_slot(static_cast<std::vector<query_condition>*>(place)->emplace_back());
}
constexpr slot_kind conditions_kind{
    .expected = "an array", .element = next_condition, .opened = clear_list<std::vector<query_condition>>};

slot slot_for(std::vector<query_condition>& conditions) {
  return {&conditions, &conditions_kind};
}

// A segment's items have no address of their own: each is put together in the loader.
template <class Record>
slot item_member(json_loader& loader, void*, std::string_view name) {
  return member_of(loader, loader.item<Record>(), name);
}
template <class Record>
void item_opened(json_loader& loader, void*) {
  loader.item<Record>() = Record();
}
template <class Record>
void item_closed(json_loader& loader, void* place, std::size_t) {
  static_cast<segment_item_list<Record>*>(place)->push_back(loader.item<Record>());
}
template <class Record>
constexpr slot_kind item_kind{.expected = "an object",
                              .member = item_member<Record>,
                              .opened = item_opened<Record>,
                              .closed = item_closed<Record>};
template <class Record>
slot next_item(json_loader&, void* place, std::size_t) {
  return {place, &item_kind<Record>};
}
template <class Record>
constexpr slot_kind items_kind{
    .expected = "an array", .element = next_item<Record>, .opened = clear_list<segment_item_list<Record>>};

template <class Record>
slot slot_for(segment_item_list<Record>& items) {
  return {&items, &items_kind<Record>};
}

template <class Record>
slot next_record(json_loader&, void* place, std::size_t) {
  auto& records = *static_cast<shared_list<Record>*>(place);
  records.push_back({});
  if constexpr (std::is_same_v<Record, short_text>)
    return slot_for(records.edit_back());
  else
    return record_slot(records.edit_back());
}
template <class Record>
constexpr slot_kind records_kind{
    .expected = "an array", .element = next_record<Record>, .opened = clear_list<shared_list<Record>>};

template <class Record>
slot slot_for(shared_list<Record>& records) {
  return {&records, &records_kind<Record>};
}

} // namespace

prevesk_dataset_data_type read_json(std::string_view json) {
  prevesk_dataset_data_type data;
  data.seed_date = data.end_date = data.skip_date = 0;
  data.seed_time = data.end_time = data.skip_time = 0;
  json_loader loader(record_slot(data));
  nlohmann::json::sax_parse(json.begin(), json.end(), &loader);
  constexpr std::uint32_t current = prevesk_dataset_data_type::current_file_version();
  if (data.file_version > current)
    throw json_exception("file_version: " + file_version_text(data.file_version) + " is newer than " +
                         file_version_text(current) + ", which is what can be written.");
  data.file_version = current;
  return data;
}

} // namespace vesk
