#include "dataset/iso_dates.h"
#include "dataset/text_encoding.h"
#include "tools/dataset_json.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vesk {

namespace {

// The queries of sections 33 and 34 belong to the series of sections 1 and 2.
constexpr int sections_to_query = 32;

// The visitor that prints. It writes piece by piece, so that the size of a data set does not matter.
class json_printer : public versioned {
public:
  json_printer(binary_writer& output, std::uint32_t version, int last_section, json_dates dates)
      : versioned(version), output_(output), last_section_(last_section), iso_(dates == json_dates::iso) {}

  void header(const std::uint32_t& file_version) { field("file_version", file_version); }
  void section(int number, const char* name, const auto& member) {
    if (number > last_section_) return;
    if constexpr (std::is_same_v<decltype(member), const double&>) {
      const date_part part = date_part_of(name);
      if (part != date_part::none) return date_or_time(name, part, member);
    }
    field(name, member);
  }
  void points_section(int number, std::string_view name, const stored_series& series) {
    if (number > last_section_) return;
    begin_member(name.substr(0, name.find('.')));
    open('{');
    field("points", series.points);
    if (from(0x00070002) && number + sections_to_query <= last_section_) field("query", series.query);
    close('}');
  }
  void query_section(int, const char*, const stored_series&) {} // written together with the points
  void retired_queries(int, const char*) {}
  void retired_text(const char*) {}

  void field(std::string_view name, const auto& member) {
    begin_member(name);
    value(member);
  }

  template <class Record>
  void record(const Record& r) {
    open('{');
    layout<Record>::fields(*this, r);
    close('}');
  }

private:
  void value(bool flag) { output_.bytes(flag ? "true" : "false"); }
  void value(std::uint32_t number) { digits(number); }
  void value(std::int32_t number) { digits(number); }
  void value(double number) {
    if (std::isfinite(number) && (number != 0 || !std::signbit(number))) return digits(number);
    if (number == 0) return output_.bytes("-0.0");
    if (std::isinf(number)) return quoted(number > 0 ? "inf" : "-inf");
    const auto bits = std::bit_cast<std::uint64_t>(number);
    if (bits == std::bit_cast<std::uint64_t>(std::numeric_limits<double>::quiet_NaN())) return quoted("nan");
    char text[32];
    std::snprintf(text, sizeof text, "nan:%016llx", static_cast<unsigned long long>(bits));
    quoted(text);
  }
  void value(const short_text& text) { value(text.str()); }
  void value(const std::string& text) {
    if (is_utf8(text)) return quoted(text);
    output_.bytes("{\"windows-1252\": ");
    quoted(utf8_from_windows_1252(text));
    output_.bytes("}");
  }
  void value(const shared_value<import_query_descriptor>& query) { record(*query); }
  void value(const std::vector<query_condition>& conditions) { lines(conditions); }
  void value(const point_list& points) {
    list(points, [this](const moment_value_pair_type& point) {
      output_.bytes("[");
      text_or_number(iso_ ? iso_date(point.date) : std::nullopt, point.date);
      output_.bytes(", ");
      text_or_number(iso_ ? iso_time(point.time) : std::nullopt, point.time);
      output_.bytes(", ");
      value(point.value);
      output_.bytes("]");
    });
  }
  template <class Pair>
  void value(const shared_array<Pair>& pairs) {
    lines(pairs);
  }
  template <class Record>
  void value(const segment_item_list<Record>& items) {
    open('[');
    for (std::size_t i = 0; i < items.size(); ++i) {
      separate();
      line(items[i]);
    }
    close(']');
  }
  template <class Record>
  void value(const shared_list<Record>& records) {
    list(records, [this](const Record& r) {
      if constexpr (std::is_same_v<Record, short_text>)
        value(r);
      else
        record(r);
    });
  }

  void date_or_time(std::string_view name, date_part part, double number) {
    begin_member(name);
    if (!iso_) return value(number);
    text_or_number(part == date_part::date ? iso_date_of_number(number) : iso_time_of_fraction(number), number);
  }
  void text_or_number(const std::optional<std::string>& text, auto number) {
    if (text) return quoted(*text);
    value(number);
  }

  void list(const auto& elements, auto print) {
    open('[');
    for (const auto& element : elements) {
      separate();
      print(element);
    }
    close(']');
  }

  // Small records without lists are printed on one line each.
  void lines(const auto& records) {
    list(records, [this](const auto& r) { this->line(r); });
  }
  void line(const auto& r) {
    in_line_ = true;
    record(r);
    in_line_ = false;
  }

  void begin_member(std::string_view name) {
    separate();
    output_.bytes("\"");
    output_.bytes(name);
    output_.bytes("\": ");
  }
  void open(char bracket) {
    output_.number(bracket);
    ++depth_;
    first_ = true;
  }
  void close(char bracket) {
    --depth_;
    if (!first_ && !in_line_) new_line();
    output_.number(bracket);
    first_ = false;
  }
  void separate() {
    if (!first_) output_.bytes(in_line_ ? ", " : ",");
    if (!in_line_) new_line();
    first_ = false;
  }
  void new_line() {
    static constexpr std::string_view indented = "\n                                ";
    output_.bytes(indented.substr(0, 1 + 2 * depth_));
  }

  void digits(auto number) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    output_.bytes({text.data(), static_cast<std::size_t>(end - text.data())});
  }

  // `text` is valid UTF-8. All control characters are escaped, even those allowed in JSON: a terminal would obey them.
  void quoted(std::string_view text) {
    output_.bytes("\"");
    while (!text.empty()) {
      std::size_t plain = 0;
      character_at_front next{0, 0};
      for (; plain < text.size(); plain += next.length) {
        next = first_character(text.substr(plain));
        if (next.character == '"' || next.character == '\\' || is_control(next.character)) break;
      }
      output_.bytes(text.substr(0, plain));
      text.remove_prefix(plain);
      if (text.empty()) break;
      escaped(next.character);
      text.remove_prefix(next.length);
    }
    output_.bytes("\"");
  }
  void escaped(char32_t c) {
    char text[8];
    switch (c) {
    case '"': return output_.bytes("\\\"");
    case '\\': return output_.bytes("\\\\");
    case '\n': return output_.bytes("\\n");
    case '\r': return output_.bytes("\\r");
    case '\t': return output_.bytes("\\t");
    default: std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(c)); return output_.bytes(text);
    }
  }

  binary_writer& output_;
  int last_section_;
  bool iso_;
  std::size_t depth_ = 0;
  bool first_ = true;    // nothing printed yet inside the innermost bracket
  bool in_line_ = false; // inside a record printed on one line
};

} // namespace

void write_json(binary_writer& output, const prevesk_dataset_data_type& data, int last_section, json_dates dates) {
  json_printer printer(output, data.file_version, last_section, dates);
  printer.record(data);
  output.bytes("\n");
  output.finish();
}

} // namespace vesk
