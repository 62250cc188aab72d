// The script language of .inp, .vkn and .rst files, as a table: one row for each keyword, used in both directions.
//
// A line is a keyword, its indices and its value. Rows stand in the order in which they are written, sizes before what
// they size.
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

// What a value may be.
enum class Range {
  any,
  size,               // a number of records, 0 or more, up to the engine's limits
  a_segment,          // 1 to the number of segments
  segment_or_outside, // the same, or 0
  date,               // month, day, year
  time_of_day,        // hour, minute, second
  days,               // since the start, of a date in the calendar: a real
  csv_name            // fit for the end of a result's name: a text
};

// An index of a keyword: what it counts, and which keyword tells how many there are.
struct Index {
  std::string_view name;       // for messages
  std::string_view count = {}; // keyword; empty: `fixed` tells
  int parents = 0;             // indices before this one that the count keyword takes
  std::int32_t fixed = 0;      // number of items where no keyword tells it
  std::string_view isc = {};   // keyword for the ISC number at a position: a GET takes the position, a PUT the number
  bool segment_before = false; // both keywords want a segment first, and ignore which
};

enum Form : unsigned { input_form = 1, network_form = 2, restart_form = 4 };

struct Keyword {
  std::string_view name;
  std::array<const Index*, 3> indices{};
  ValueKind value = ValueKind::integer;
  unsigned forms = input_form; // that may hold it
  Range range = Range::any;
  bool counts_from_zero_on_get = false; // what a GET tells, plus 1, is what a PUT takes
  bool left_out_when_empty = false;     // an empty text is not written
};

std::span<const Keyword> keywords();

// In capital or small letters. Null for a keyword that the form does not have.
const Keyword* find_keyword(std::string_view name, Form form);
// The keyword that a misspelt name stands for: the one of the form that differs in the fewest letters, empty where
// that is more than every third.
std::string_view nearest_keyword(std::string_view name, Form form);

} // namespace reference_engine

#endif
