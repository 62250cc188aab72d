#include "charts/cell.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vesk {
namespace {

const cell_type date{cell_kind::date}, time_of_day{cell_kind::time};
const cell_type number = number_cell("####.##"), simple = number_cell("E"), choice = combo_cell({"Linear", "Step"});

// The value as its exact text, or the refusal.
std::string read(const cell_type& type, std::string_view text) {
  const cell_entry entry = read_entry(type, text);
  if (!entry.accepted()) return "refused: " + entry.refusal;
  std::string result;
  append_clipboard_text(result, type, entry.value);
  return result;
}

TEST(Cell, ReadsDates) {
  EXPECT_EQ(read(date, "2/29/2012"), "2012-02-29");
  EXPECT_EQ(read(date, "2012-10-01"), "2012-10-01");
  EXPECT_EQ(read(date, " 1/1/1600 "), "1600-01-01");
  EXPECT_EQ(read(date, "12/31/3999"), "3999-12-31");
  EXPECT_EQ(read(date, "10/1/07"), "2007-10-01");
  EXPECT_EQ(read(date, "2/30/2012"), "refused: \"2/30/2012\" is not a day of the calendar");
  EXPECT_EQ(read(date, "12/31/1599"), "refused: \"12/31/1599\" is outside the years 1600 to 3999");
  EXPECT_EQ(read(date, "1/1/4000"), "refused: \"1/1/4000\" is outside the years 1600 to 3999");
  for (const auto* text :
       {"", "x", "2012", "1/1", "1/1/201", "2012-1", "1/1/2012x", "111/1/2012", "0/1/2012", "1/1/0000"})
    EXPECT_EQ(read(date, text).substr(0, 8), "refused:") << text;
  EXPECT_EQ(cell_text(date, 150000.0), "09/08/2010");
  EXPECT_EQ(cell_text(date, 1e9), "year 28979"); // of a damaged file
}

TEST(Cell, ReadsTimes) {
  EXPECT_EQ(read(time_of_day, "7:05"), "07:05:00");
  EXPECT_EQ(read(time_of_day, "23:59:59"), "23:59:59");
  EXPECT_EQ(cell_text(time_of_day, 25500.0), "07:05");
  EXPECT_EQ(cell_text(time_of_day, 25501.0), "07:05:01");
  EXPECT_EQ(cell_text(time_of_day, std::nan("")), "00:00");
  EXPECT_EQ(read(time_of_day, "12:30:15 AM"), "00:30:15"); // as spreadsheets write it in some countries
  EXPECT_EQ(read(time_of_day, "12:00 pm"), "12:00:00");
  EXPECT_EQ(read(time_of_day, "6:05PM"), "18:05:00");
  for (const auto* text : {"24:00", "12:60", "12", "12:", "12:00:61", "-1:00", "13:00 PM", "0:30 AM", "pm", "1:00 m"})
    EXPECT_EQ(read(time_of_day, text).substr(0, 8), "refused:") << text;
}

TEST(Cell, ReadsNumbersInThePicture) {
  EXPECT_EQ(read(number, "9999.12345"), "9999.12345"); // more digits than shown are kept
  EXPECT_EQ(read(number, "+1e-3"), "0.001");
  EXPECT_EQ(read(number, "10000"), "refused: the number has more than 4 digits before the point");
  EXPECT_EQ(read(number, "-10000"), "refused: the number has more than 4 digits before the point");
  EXPECT_EQ(read(simple, "-1e300"), "-1e+300");
  EXPECT_EQ(read(simple, "1,5"), "refused: \"1,5\" has a comma; use a decimal point");
  EXPECT_EQ(read(simple, "1e400"), "refused: \"1e400\" is too large or too small a number");
  EXPECT_EQ(read(simple, "123456789012345678901234567890123"), "refused: a number has at most 32 characters");
  for (const auto* text : {"", "abc", "inf", "nan", "1x", "0x10", "--1", "+-1", "1 2"})
    EXPECT_EQ(read(simple, text).substr(0, 8), "refused:") << text;
  EXPECT_EQ(entry_text(number, 1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(cell_text(number, 1.0 / 3), "0.33");
}

TEST(Cell, ReadsDurations) {
  const cell_type days{cell_kind::number, "####.####", {}, true};
  EXPECT_EQ(read(days, "6 h"), "0.25");
  EXPECT_EQ(read(days, "2d"), "2");
  EXPECT_EQ(read(days, "1440 MIN"), "1");
  EXPECT_EQ(read(days, "0.5"), "0.5");
  EXPECT_EQ(read(days, "h"), "refused: expected a number, found \"h\"");
}

TEST(Cell, ReadsItemsFlagsAndTexts) {
  EXPECT_EQ(read(choice, "sTEP"), "Step");
  EXPECT_EQ(read(choice, "1"), "refused: \"1\" is not in the list");
  EXPECT_EQ(cell_text(choice, 7.0), ""); // a stored position without an item
  EXPECT_EQ(cell_text(combo_cell({"Linear", "Step"}, 1), 7.0), "Step");
  EXPECT_EQ(read(check_cell(), "YES"), "1");
  EXPECT_EQ(read(check_cell(), "false"), "0");
  EXPECT_EQ(read(check_cell(), "2").substr(0, 8), "refused:");
  EXPECT_EQ(read(text_cell(), "a\tb\nc"), "a b c");
  std::string umlauts;
  for (int i = 0; i < 200; ++i) umlauts += "ü";
  EXPECT_EQ(read(text_cell(), umlauts).size(), 254U); // 127 whole characters: the 128th would be byte 256
}

TEST(Cell, TakesComputedNumbers) {
  EXPECT_EQ(std::get<double>(computed_entry(date, 41183).value), 41183 + 109571.0); // 1 October 2012
  EXPECT_EQ(expression_number(date, 41183 + 109571.0), 41183);
  EXPECT_FALSE(computed_entry(date, 0.5).accepted());
  EXPECT_EQ(std::get<double>(computed_entry(time_of_day, 0.5).value), 43200);
  EXPECT_EQ(std::get<double>(computed_entry(time_of_day, 0.9999999).value), 86399);
  EXPECT_FALSE(computed_entry(time_of_day, 1).accepted());
  EXPECT_FALSE(computed_entry(choice, 2).accepted());
  EXPECT_FALSE(computed_entry(choice, 0.5).accepted());
  EXPECT_FALSE(computed_entry(simple, std::nan("")).accepted());
  EXPECT_FALSE(computed_entry(number, 1e5).accepted());
}

} // namespace
} // namespace vesk
