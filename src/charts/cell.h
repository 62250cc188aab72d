// What a cell of a grid holds, shows and accepts.
//
// Texts are UTF-8. The decimal sign is the point in every locale. Nothing here throws, apart from std::bad_alloc.
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

// Nothing (a blank cell), a number or a text. As a number: of a date the day number (day 0 is 1 January 1600), of a
// time the seconds since midnight, of a combo the item's position from 0, of a check box 0 or 1.
using cell_value = std::variant<std::monostate, double, std::string>;

// Limits of what can be typed.
inline constexpr std::size_t longest_number_entry = 32; // characters
inline constexpr std::size_t longest_text_entry = 128;  // characters, where a name is edited; at most 255 bytes
inline constexpr double last_day = last_calendar_day;   // 31 December 3999

struct cell_type {
  cell_kind kind = cell_kind::text;
  std::string picture = {};                    // of a number; see numeric_picture.h
  std::shared_ptr<const item_list> items = {}; // of a combo; not null there
  bool is_duration = false; // of a number in days: "1 h", "5 min", "30 s" and "1 d" are taken as well
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
// `stand_in`: the item that is shown for a stored position that has none.
inline cell_type combo_cell(std::vector<std::string> items, std::optional<std::size_t> stand_in = std::nullopt) {
  return {.kind = cell_kind::combo, .items = std::make_shared<fixed_items>(std::move(items), stand_in)};
}

// What the cell shows; a check box as 1 or 0. Combo positions without an item show the list's stand-in, or nothing.
std::string cell_text(const cell_type& type, const cell_value& value);

// The value's exact, shortest text: what an entry begins with, and what is copied. Dates are MM/DD/yyyy when typed and
// yyyy-mm-dd on the clipboard. A text that pasted_text would not give back as it is stands in quotes there.
std::string entry_text(const cell_type& type, const cell_value& value);
void append_clipboard_text(std::string& text, const cell_type& type, const cell_value& value);

// An entry that was read: the value, or why it was refused, as the end of a sentence ("expected a number, found "x"").
struct cell_entry {
  cell_value value;
  std::string refusal; // empty: accepted
  bool accepted() const { return refusal.empty(); }
};

cell_entry read_entry(const cell_type& type, std::string_view text);

// A computed number as a cell's value: dates come as date-time numbers (days since 30 December 1899) and must be whole,
// times as a fraction of a day from 0 to below 1, rounded to the second, items as item_list numbers them.
cell_entry computed_entry(const cell_type& type, double result);

// The number that an expression sees for the value: the inverse of computed_entry. 0 for texts and blank cells.
double expression_number(const cell_type& type, const cell_value& value);

} // namespace vesk
