// The content of a grid cell: its value, its text, and the entries that it accepts.
//
// Texts are UTF-8. The decimal separator is a point in every locale. Nothing here throws, except std::bad_alloc.
#pragma once

#include "charts/item_list.h"
#include "dataset/moment.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vesk {

enum class cell_kind { text, date, time, number, combo, check };

// Nothing (a blank cell), a number or a text. As a number, a date is its day number (day 0 is 1 January 1600), a time
// the seconds since midnight, a combo item its position from 0, a check box 0 or 1.
using cell_value = std::variant<std::monostate, double, std::string>;

// Limits for typed entries.
inline constexpr std::size_t longest_number_entry = 32; // characters
inline constexpr std::size_t longest_text_entry = 128;  // characters, for names; at most 255 bytes
inline constexpr double last_day = last_calendar_day;   // 31 December 3999

struct cell_type {
  cell_kind kind = cell_kind::text;
  std::string picture = {};                      // of a number; see numeric_picture.h
  std::shared_ptr<const item_list> items = {};   // of a combo, where it is not null
  bool is_duration = false;                      // of a number in days: also accepts "1 h", "5 min", "30 s" and "1 d"
  std::size_t longest_text = longest_text_entry; // characters of a text
};

inline cell_type text_cell() {
  return {.kind = cell_kind::text};
}
inline cell_type check_cell() {
  return {.kind = cell_kind::check};
}
inline cell_type number_cell(std::string picture) {
  return {.kind = cell_kind::number, .picture = std::move(picture)};
}
// `stand_in`: the item shown for a stored position without an item.
inline cell_type combo_cell(std::vector<std::string> items, std::optional<std::size_t> stand_in = std::nullopt) {
  return {.kind = cell_kind::combo, .items = std::make_shared<fixed_items>(std::move(items), stand_in)};
}

// The text shown in the cell; 1 or 0 for a check box. A combo position without an item shows the list's stand-in, or
// nothing.
std::string cell_text(const cell_type& type, const cell_value& value);

// The value's exact, shortest text: the start of an entry, and the text that is copied. Dates are MM/DD/yyyy in entries
// and yyyy-mm-dd on the clipboard. On the clipboard, a text that pasted_text would not return unchanged is in quotes.
std::string entry_text(const cell_type& type, const cell_value& value);
void append_clipboard_text(std::string& text, const cell_type& type, const cell_value& value);

// The result of reading an entry: the value, or the reason for refusing it, as the end of a sentence ("expected a
// number, found "x"").
struct cell_entry {
  cell_value value;
  std::string refusal; // empty: accepted
  bool accepted() const { return refusal.empty(); }
};

cell_entry read_entry(const cell_type& type, std::string_view text);

// A computed number as a cell value. Dates are computed as date-time numbers (days since 30 December 1899) and must be
// whole; times as a fraction of a day from 0 to below 1, rounded to the second; items as numbered by item_list.
cell_entry computed_entry(const cell_type& type, double result);

// The number used in expressions for the value: the inverse of computed_entry. 0 for texts and blank cells.
double expression_number(const cell_type& type, const cell_value& value);

} // namespace vesk
