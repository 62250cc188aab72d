// What kind of values a column of texts holds, where the file itself does not say.
#pragma once

#include "query/sources/table_source.h"
#include "query/sources/text/date_text.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace vesk {

// Whether a text that is not empty says that there is no value, such as NA, or is a spreadsheet's error.
bool marks_missing(std::string_view text);

// The type of a column and how its texts are written.
struct column_form {
  field_type type = field_type::string;
  date_form dates = date_form::iso; // of a date, a time or a date-time
  bool decimal_comma = false;       // of a number

  // The value of a text; null when it is empty or marks a missing value. One that is not of a number's, date's or
  // time's form stays a text.
  table_value read(std::string_view text) const;
};

// Counts the forms of a column's texts, and settles the one that most of them have: every text votes, so that
// "31/1/2011" in the last row decides the order of day and month in the first.
//
// Dates win with more than half of the votes, numbers with three quarters. Texts that mark a missing value, such as NA,
// have none. A text of digits with a 0 before them, "02080500", is a code, and the column is one of texts.
class column_votes {
public:
  void add(std::string_view text);

  // A value that may be more than a text already.
  void add(const table_value& value);

  std::uint64_t count() const { return votes_; }

  // `prefer_comma`: numbers such as "1,234", which may be both, have a decimal comma if nothing else decides.
  column_form settle(bool prefer_comma = false) const;

private:
  bool add_number(std::string_view text);
  bool add_date(std::string_view text);

  static constexpr std::size_t forms = 6; // of dates
  std::uint64_t votes_ = 0, codes_ = 0;
  std::uint64_t whole_ = 0, point_ = 0, comma_ = 0; // numbers without a fraction, and by their decimal sign
  std::uint64_t large_ = 0;                         // of the whole ones: beyond 32 bits
  std::array<std::uint64_t, forms> dates_{}, with_time_{};
  std::uint64_t dates_as_such_ = 0, as_such_with_time_ = 0; // not texts
};

} // namespace vesk
