// The script language of .inp, .vkn and .rst files as a table: one row for each keyword, used in both directions.
//
// A line is a keyword, its indices and its value. Rows are in the order in which they are written: sizes before the
// items that they size.
#ifndef REFERENCE_ENGINE_SCRIPT_KEYWORDS_H
#define REFERENCE_ENGINE_SCRIPT_KEYWORDS_H

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace reference_engine {

enum class ValueKind {
  integer,
  real,
  text,
  point, // two reals: days since the start, value
  triple // three integers: a date or a time of day
};

// Allowed values.
enum class Range {
  any,
  size,               // a number of records, 0 or more, up to the engine's limits
  a_segment,          // 1 to the number of segments
  segment_or_outside, // the same, or 0
  date,               // month, day, year
  time_of_day,        // hour, minute, second
  days,               // a real: days since the start, within the calendar
  csv_name            // a text: valid as the end of a result name
};

// An index of a keyword: what it counts, and which keyword gives the number of items.
struct Index {
  std::string_view name;       // for messages
  std::string_view count = {}; // keyword; if empty, `fixed` is the number of items
  int parents = 0;             // indices before this one that the count keyword takes
  std::int32_t fixed = 0;      // number of items if no keyword gives it
  std::string_view isc = {};   // keyword for the ISC number at a position: a GET takes the position, a PUT the number
  bool segment_before = false; // both keywords take a segment first, and ignore its value
};

enum Form : unsigned { input_form = 1, network_form = 2, restart_form = 4 };

struct Keyword {
  std::string_view name;
  std::array<const Index*, 3> indices{};
  ValueKind value = ValueKind::integer;
  unsigned forms = input_form; // forms that may contain it
  Range range = Range::any;
  bool counts_from_zero_on_get = false; // a PUT takes the value of the GET plus 1
  bool left_out_when_empty = false;     // an empty text is not written
};

std::span<const Keyword> keywords();

// Upper or lower case. Null for a keyword that the form does not have.
const Keyword* find_keyword(std::string_view name, Form form);
// The keyword most similar to a misspelt name: the one of the form with the fewest different letters; empty if more
// than every third letter differs.
std::string_view nearest_keyword(std::string_view name, Form form);

} // namespace reference_engine

#endif
