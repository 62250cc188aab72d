// Determines the type of a text column if the file itself does not define it.
#pragma once

#include "query/sources/table_source.h"
#include "query/sources/text/date_text.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace vesk {

// Whether a non-empty text means that there is no value, such as NA, or is a spreadsheet error.
bool marks_missing(std::string_view text);

// The type of a column and the notation of its texts.
struct column_form {
  field_type type = field_type::string;
  date_form dates = date_form::iso; // of a date, a time or a date-time
  bool decimal_comma = false;       // of a number

  // The value of a text; null if it is empty or marks a missing value. A text that does not match the form of the
  // column's numbers or dates remains a text.
  table_value read(std::string_view text) const;
};

// Counts the forms of a column's texts, and chooses the most frequent: every text votes, so "31/1/2011" in the last row
// decides the order of day and month in the first.
//
// Dates win with more than half of the votes, numbers with three quarters. Texts that mark a missing value, such as NA,
// do not vote. A text of digits with a leading 0, "02080500", is a code, and makes the column a text column.
class column_votes {
public:
  void add(std::string_view text);

  // For values that may already have a type.
  void add(const table_value& value);

  std::uint64_t count() const { return votes_; }

  // `prefer_comma`: ambiguous numbers such as "1,234" have a decimal comma if nothing else decides.
  column_form settle(bool prefer_comma = false) const;

private:
  bool add_number(std::string_view text);
  bool add_date(std::string_view text);

  static constexpr std::size_t forms = 6; // of dates
  std::uint64_t votes_ = 0, codes_ = 0;
  std::uint64_t whole_ = 0, point_ = 0, comma_ = 0; // numbers without a fraction, and by their decimal sign
  std::uint64_t large_ = 0;                         // whole numbers beyond 32 bits
  std::array<std::uint64_t, forms> dates_{}, with_time_{};
  std::uint64_t dates_as_such_ = 0, as_such_with_time_ = 0; // values with a date type, not texts
};

} // namespace vesk
