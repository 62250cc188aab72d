#include "dataset/file_version_text.h"
#include "dataset/iso_dates.h"
#include "dataset/text_encoding.h"
#include "platform/nearest_name.h"
#include "tools/clockless_data_set.h"
#include "tools/dataset_json.h"
#include "tools/json_loader.h"

#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace vesk {

namespace {

// Segment items have no address, so each is assembled here before it is added to its list.
struct data_set_loader : json_loader {
  std::tuple<segment_parameter_data_record_type, segment_system_data_record_type> items;
};

template <class Record>
Record& item_of(json_loader& loader) {
  return std::get<Record>(static_cast<data_set_loader&>(loader).items);
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
      loader.fail(std::to_string(number) + " is outside " + std::to_string(limits::min()) + " to " +
                  std::to_string(limits::max()) + ".");
    *static_cast<Integer*>(place) = static_cast<Integer>(number);
  };
  if (const auto* negative = std::get_if<std::int64_t>(&value)) return take(*negative);
  if (const auto* positive = std::get_if<std::uint64_t>(&value)) return take(*positive);
  loader.fail_unexpected("a whole number", value);
}

// Doubles that JSON has no number for.
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
    number = *i == 0 ? -0.0 : static_cast<double>(*i); // a signed integer of 0 was "-0"
  } else if (const auto* u = std::get_if<std::uint64_t>(&value)) {
    number = static_cast<double>(*u);
  } else {
    const auto* text = std::get_if<std::string>(&value);
    const auto special = text ? special_double(*text) : std::nullopt;
    if (!special) loader.fail_unexpected("a number", value);
    // Copies the bits: passing a signalling not-a-number as a number may change it.
    std::memcpy(place, &*special, sizeof number);
  }
}

// A date or time: the number stored in the file, or an ISO 8601 text.
template <class Number>
struct date_form {
  const char* expected;
  std::optional<Number> (*from_text)(std::string_view);
};
constexpr date_form<std::int32_t> point_date{"a day number or a date like \"2011-10-01\"", day_of_iso_date};
constexpr date_form<std::int32_t> point_time{"seconds or a time like \"06:30:00\"", seconds_of_iso_time};
constexpr date_form<double> own_date{"a day number or a date like \"2011-10-01\"", number_of_iso_date};
constexpr date_form<double> own_time{"a fraction of a day or a time like \"06:30:00\"", fraction_of_iso_time};

void take_number(json_loader& loader, std::int32_t* place, json_scalar&& value) {
  take_integer<std::int32_t>(loader, place, std::move(value));
}
void take_number(json_loader& loader, double* place, json_scalar&& value) {
  take_double(loader, place, std::move(value));
}

template <class Number, const date_form<Number>& form>
void take_date(json_loader& loader, void* place, json_scalar&& value) {
  const auto* text = std::get_if<std::string>(&value);
  const bool is_special = std::is_same_v<Number, double> && text && special_double(*text);
  if (!text || is_special) return take_number(loader, static_cast<Number*>(place), std::move(value));
  const auto number = form.from_text(*text);
  constexpr std::size_t most_shown = 40;
  if (!number) loader.fail_unexpected(form.expected, text->size() > most_shown ? "a text" : "\"" + *text + "\"");
  *static_cast<Number*>(place) = *number;
}

void put_text(json_loader&, std::string& to, std::string&& text) {
  to = std::move(text);
}
void put_text(json_loader& loader, short_text& to, std::string&& text) {
  if (text.size() > short_text::max_size)
    loader.fail("the text has " + std::to_string(text.size()) + " bytes; at most 255 are allowed.");
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
  if (!bytes) loader.fail("a character is not in Windows-1252.");
  put_text(loader, *static_cast<Text*>(place), std::move(*bytes));
}

template <class Text>
constexpr slot_kind windows_1252_kind{.expected = "a text", .take = take_windows_1252<Text>};

template <class Text>
slot text_member(json_loader& loader, void* place, std::string_view name) {
  if (name != "windows-1252") loader.fail("unknown member; the only one is windows-1252.");
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
template <class Number, const date_form<Number>& form>
constexpr slot_kind date_kind{.expected = form.expected, .take = take_date<Number, form>};

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
  void section(int, std::string_view name, auto& member) {
    field(name, member);
    if constexpr (std::is_same_v<decltype(member), double&>) {
      const date_part part = date_part_of(name);
      if (name != name_ || part == date_part::none) return;
      found_.kind = part == date_part::date ? &date_kind<double, own_date> : &date_kind<double, own_time>;
    }
  }
  void points_section(int, std::string_view name, stored_series& series) {
    field(name.substr(0, name.find('.')), series);
  }
  void query_section(int, std::string_view, stored_series&) {} // read together with the points
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

// Here the data set's own two series, each stored in two sections of the file, are one object each.
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
  if (!finder.found().kind) loader.fail("unknown member" + nearest_hint(name, finder.names()) + ".");
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
  case 0: return {&point.date, &date_kind<std::int32_t, point_date>};
  case 1: return {&point.time, &date_kind<std::int32_t, point_time>};
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

template <class Record>
slot item_member(json_loader& loader, void*, std::string_view name) {
  return member_of(loader, item_of<Record>(loader), name);
}
template <class Record>
void item_opened(json_loader& loader, void*) {
  item_of<Record>(loader) = Record();
}
template <class Record>
void item_closed(json_loader& loader, void* place, std::size_t) {
  static_cast<segment_item_list<Record>*>(place)->push_back(item_of<Record>(loader));
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
  prevesk_dataset_data_type data = clockless_data_set();
  data_set_loader().load(json, record_slot(data));
  constexpr std::uint32_t current = prevesk_dataset_data_type::current_file_version();
  if (data.file_version > current)
    throw json_exception("file_version: " + file_version_text(data.file_version) + " is newer than " +
                         file_version_text(current) + ", the version that is written.");
  data.file_version = current;
  return data;
}

} // namespace vesk
