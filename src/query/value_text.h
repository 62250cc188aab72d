// Values of a source as texts: as the lists of a condition show them, and as its literals name them.
#pragma once

#include "query/sources/table_source.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vesk {

// A date is "M/D/YYYY", a time of no date "h:mm:ss", a moment both with a blank between, and without the time at
// midnight; a flag is "True" or "False"; a number is the shortest text that reads back as the same number.
std::string number_text(double value, field_type type);
std::string integer_text(std::int64_t value, field_type type);

// The same of any value; empty for null.
std::string value_text(const table_value& value, field_type type);

// Empty, or nothing but blanks: no value.
bool is_blank(std::string_view text);

// The date-time number that such a text means, a date, a time or both, or another one that a person would write: dates
// are month/day/year, year-month-day or with the month's name. Nothing for any other text.
std::optional<double> moment_literal(std::string_view text);

// The message for a value of the wrong kind: expected a number, found "<0.5". A long text is cut.
std::string not_of_its_kind(std::string_view text, const char* wanted);

} // namespace vesk
