#include "charts/fill_calc_table.h"

#include "charts/cells_html.h"
#include "charts/expression.h"
#include "charts/pasted_text.h"
#include "number_grid.h"
#include "print_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace vesk {
namespace {

constexpr double first_day = 150479; // 12/31/2011

struct FillCalcTable : testing::Test {
  FillCalcTable() {
    content.add(first_day, 0, 1.005, "a");
    content.add(first_day + 1, 60, 2, "b");
    content.add(first_day + 2, 3661, 3, "c");
    table.OnBeginChange = [this](const std::string& label) { log += label + ";"; };
    table.OnEndChange = [this](bool completed) { log += completed ? "end;" : "failed;"; };
    table.display_rows();
  }

  memory_grid content;
  TFillCalcTable table{content};
  std::string log;
};

TEST_F(FillCalcTable, ShowsAndTakesCells) {
  EXPECT_EQ(print(table), "12/31/2011|00:00|1.00|a|Linear|0|7\n"
                          "01/01/2012|00:01|2.00|b|Linear|0|7\n"
                          "01/02/2012|01:01:01|3.00|c|Linear|0|7\n");
  EXPECT_TRUE(table.enter(0, 2, "1.00")); // as shown: the exact value stays
  EXPECT_EQ(content.writes, 0);
  EXPECT_EQ(table.tool_tip(0, 2), "Exactly 1.005");
  EXPECT_EQ(table.tool_tip(1, 2), "");
  EXPECT_TRUE(table.enter(0, 6, "8")); // read-only
  EXPECT_EQ(content.writes, 0);
  EXPECT_TRUE(table.enter(0, 4, "step"));
  EXPECT_EQ(content.rows[0][4], cell_value(1.0));
  EXPECT_EQ(log, "Edit;end;");
}

// The cell keeps what it shows, also where it would not accept that from anyone else.
TEST_F(FillCalcTable, TakesBackWhatItShows) {
  content.rows[1][2] = std::numeric_limits<double>::quiet_NaN();
  content.column_list[4].type = combo_cell({"Linear", "Step"}, 1);
  content.rows[1][4] = 7.0; // shown as "Step"
  table.set_selection(cell_range{1, 0, 1, 4});
  const std::string row = table.do_copy();
  EXPECT_EQ(table.do_paste(row).refusal, "");
  EXPECT_TRUE(table.enter(1, 4, "Step"));
  EXPECT_EQ(content.writes, 0);
  table.set_selection(cell_range{2, 0, 2, 4});
  EXPECT_EQ(table.do_paste(row).refusal,
            "Line 1, column 3: expected a finite number, found \"NaN\". Nothing was pasted.");
  EXPECT_TRUE(table.enter(1, 4, "Step", true)); // chosen from the list
  EXPECT_EQ(content.rows[1][4], cell_value(1.0));
}

TEST_F(FillCalcTable, KeepsARefusedEntryUntilItIsCorrected) {
  EXPECT_FALSE(table.enter(1, 2, "1,5"));
  EXPECT_EQ(table.text(1, 2), "1,5");
  EXPECT_EQ(table.tool_tip(1, 2), "Not accepted: \"1,5\" has a comma; use a decimal point.");
  EXPECT_FALSE(table.enter(0, 2, "9")); // another cell waits
  table.OnClick = [](std::size_t, std::size_t) { ADD_FAILURE(); };
  table.click(0, 5);
  table.set_active(2, 2);
  EXPECT_FALSE(table.extend_on_down(move_command::down));
  EXPECT_EQ(content.writes, 0);
  EXPECT_TRUE(table.enter(1, 2, "1.5"));
  EXPECT_EQ(content.rows[1][2], cell_value(1.5));
  table.enter(1, 2, "x");
  table.give_up_refused();
  EXPECT_EQ(table.text(1, 2), "1.50");
}

TEST_F(FillCalcTable, TheActiveCellFollowsItsRowThroughASort) {
  std::vector<std::size_t> entered;
  table.OnEnteringRow = [&](std::size_t row) { entered.push_back(row); };
  table.set_active(2, 0);
  table.enter(2, 0, "2011-01-01");
  EXPECT_EQ(table.active_row(), 0U);
  EXPECT_EQ(table.text(0, 3), "c");
  EXPECT_EQ(entered, (std::vector<std::size_t>{2, 0}));
}

TEST_F(FillCalcTable, InsertsAndDeletesRows) {
  table.set_active(1, 2);
  table.insert_row_at_active();
  EXPECT_EQ(table.text(1, 3), "new");
  table.delete_active_row();
  table.set_selection(cell_range{0, 0, 1, 0});
  table.delete_selected_rows();
  EXPECT_EQ(print(table), "01/02/2012|01:01:01|3.00|c|Linear|0|7\n");
  table.delete_active_row();
  EXPECT_TRUE(table.is_shown_as_empty());
  EXPECT_EQ(table.row_limit(), 1U);
  EXPECT_TRUE(table.enter(0, 2, "5")); // the blank row takes nothing
  table.delete_active_row();
  EXPECT_FALSE(table.extend_on_down(move_command::down));
  table.insert_row_at_active();
  EXPECT_FALSE(table.extend_on_down(move_command::up));
  EXPECT_TRUE(table.extend_on_down(move_command::down));
  EXPECT_EQ(table.active_row(), 1U);
}

TEST_F(FillCalcTable, CopiesExactValues) {
  table.set_selection(cell_range{0, 0, 1, 2});
  const std::string text = table.do_copy();
  EXPECT_EQ(text, "2011-12-31\t00:00:00\t1.005\n2012-01-01\t00:01:00\t2\n");
  EXPECT_EQ(table.do_copy(true).substr(0, 16), "Date\tTime\tValue\n");
  EXPECT_EQ(table.do_paste(text).refusal, "");
  EXPECT_EQ(content.writes, 0);
  EXPECT_THAT(html_of_cells(text), testing::HasSubstr("<td sdval=\"40908\" sdnum=\"1033;1033;YYYY-MM-DD\""));
  EXPECT_THAT(html_of_cells(text),
              testing::HasSubstr("<td sdval=\"1.005\" sdnum=\"1033;\" x:num=\"1.005\">1.005</td>"));
  EXPECT_THAT(html_of_cells("\"a\tb\"\t<5&\t2012-13-01\n"),
              testing::HasSubstr("<tr><td>a\tb</td><td>&lt;5&amp;</td><td>2012-13-01</td></tr>"));
  content.rows[0][3] = std::string("\"5 m\" pond\tof Wörth");
  content.rows[1][3] = std::string("\"quoted\"");
  content.rows[2][3] = std::string(200, 'x'); // more than can be typed
  content.rows[2][4] = 7.0;                   // no item
  table.set_selection(cell_range{0, 3, 2, 4});
  EXPECT_EQ(table.do_copy().substr(0, 31), "\"\"\"5 m\"\" pond\tof Wörth\"\tLinear");
  EXPECT_EQ(
      table.do_paste("\"\"\"5 m\"\" pond\tof Wörth\"\tLinear\n\"\"\"quoted\"\"\"\n" + std::string(200, 'x')).refusal,
      "");
  EXPECT_EQ(content.writes, 0);
}

TEST_F(FillCalcTable, PastesAllOrNothing) {
  table.set_active(0, 2);
  EXPECT_EQ(table.do_paste("1.00").refusal, ""); // as shown
  EXPECT_EQ(content.rows[0][2], cell_value(1.005));
  EXPECT_EQ(table.do_paste("1").refusal, "");
  EXPECT_EQ(content.rows[0][2], cell_value(1.0));
  log.clear();
  table.set_active(1, 2);
  EXPECT_EQ(table.do_paste("5\td\r\n6\r\n7\te\n").refusal, "");
  EXPECT_EQ(print(table), "12/31/2011|00:00|1.00|a|Linear|0|7\n"
                          "01/01/2012|00:01|5.00|d|Linear|0|7\n"
                          "01/02/2012|01:01:01|6.00|c|Linear|0|7\n"
                          "01/02/1600|00:00|7.00|e|Linear|0|7\n");
  EXPECT_EQ(log, "Paste;end;");
  const auto before = content.rows;
  EXPECT_EQ(table.do_paste("1\n2\nx\n").refusal,
            "Line 3, column 1: expected a number, found \"x\". Nothing was pasted.");
  EXPECT_EQ(table.do_paste("1\ta\tStep\t1\t7\tmore").refusal,
            "Line 1, column 6: there is no column for \"more\". Nothing was pasted.");
  EXPECT_EQ(table.do_paste("").refusal, "The clipboard contains no text.");
  EXPECT_EQ(content.rows, before);
  table.set_active(0, 4);
  EXPECT_EQ(table.do_paste("Step\tnonsense\tnonsense\n").refusal, ""); // past check box and read-only cell
  EXPECT_EQ(content.rows[0][5], cell_value(0.0));
}

TEST_F(FillCalcTable, APasteOverAllRowsReplacesThem) {
  table.set_selection(cell_range{0, 0, 2, 2});
  EXPECT_EQ(table.do_paste("2012-10-01 12:30\t8\n").refusal, ""); // date and time in one field
  EXPECT_EQ(print(table), "10/01/2012|12:30|8.00|a|Linear|0|7\n");
  table.set_selection(cell_range{0, 0, 0, 0});
  const std::string line = "2012-10-01\t12:30\t8\n";
  EXPECT_EQ(table.do_paste(line + line + line + line).refusal, "");
  EXPECT_EQ(table.selection(), (cell_range{0, 0, 3, 2})); // the pasted rows
}

TEST_F(FillCalcTable, AGridWithFixedRowsTakesNoMoreLines) {
  memory_grid fixed(false);
  fixed.add(first_day, 0, 1, "a");
  TFillCalcTable fixed_table(fixed);
  EXPECT_EQ(fixed_table.do_paste("2012-01-01\n2012-01-02\n").refusal,
            "The clipboard has 2 lines, but only 1 row is left from row 1 on.");
  fixed_table.insert_row_at_active();
  fixed_table.delete_active_row();
  EXPECT_EQ(fixed.rows.size(), 1U);
}

TEST_F(FillCalcTable, FillsTheSelection) {
  table.set_selection(cell_range{0, 2, 2, 3}); // the text column is passed over
  EXPECT_EQ(table.calculate_selection("x * 2 + row * 100 + i * 10 / n"), "");
  EXPECT_EQ(content.rows[1][2], cell_value(4 + 200 + 20 / 3.0));
  EXPECT_EQ(table.text(1, 3), "b");
  EXPECT_EQ(table.calculate_selection("1 / (row - 2)"),
            "Row 2: the result is not a finite number. Nothing was filled.");
  EXPECT_EQ(content.rows[0][2], cell_value(2.01 + 100 + 10 / 3.0));
  table.set_selection(cell_range{0, 3, 1, 3});
  EXPECT_EQ(table.calculate_selection("Mill pond"), "");
  EXPECT_EQ(table.text(1, 3), "Mill pond");
  table.set_selection(cell_range{0, 5, 0, 6});
  EXPECT_EQ(table.calculate_selection("1"), "The selected cells cannot be changed.");
}

TEST_F(FillCalcTable, ChartsItsRows) {
  const auto data = table.generate_moment_value_graph_data(1, 2, 3);
  ASSERT_EQ(data->count, 3);
  EXPECT_DOUBLE_EQ(data->x[0], 15339); // 31 December 2011
  EXPECT_DOUBLE_EQ(data->x[1], 15340 + 60 / 86400.0);
  EXPECT_EQ(data->y, (std::vector<double>{1.005, 2, 3}));
  table.delete_all_rows();
  EXPECT_EQ(table.generate_moment_value_graph_data(1, 2, 3), nullptr);
}

TEST_F(FillCalcTable, GoesToTheNextMark) {
  EXPECT_FALSE(table.go_to_next_mark());
  content.marked = "b";
  EXPECT_TRUE(table.go_to_next_mark());
  EXPECT_EQ(table.active_row(), 1U);
  table.set_active(2, 0);
  EXPECT_FALSE(table.go_to_next_mark());
  EXPECT_TRUE(table.go_to_next_mark(true));
}

TEST(Expression, RefusesWhatItCannotCompute) {
  const auto refusal = [](const std::string& text) {
    try {
      expression(text).evaluate({});
      return std::string();
    } catch (const expression_exception& error) {
      return std::string(error.what());
    }
  };
  EXPECT_EQ(refusal("x = 5"), "The expression has an \"=\"; write \"==\" to compare.");
  EXPECT_EQ(refusal("x <= 5 ? 1 : 2"), "");
  EXPECT_EQ(refusal("1,5"), "The expression has a comma outside a function; use a decimal point.");
  EXPECT_EQ(refusal("max(x, 1) + y"),
            "The expression has an unknown name \"y\" at character 13; known are x, row, i and n.");
  EXPECT_EQ(refusal(""), "The expression is empty.");
  EXPECT_EQ(refusal("(x"), "The expression has a bracket that is not closed.");
  EXPECT_EQ(refusal(std::string(10000, '1')), "The expression has 10000 characters; at most 5000 are accepted.");
  EXPECT_EQ(refusal("x²"), "The expression has a character that is not ASCII.");
  EXPECT_FALSE(refusal("sqrt()").empty());
  EXPECT_DOUBLE_EQ(expression("x ^ 2 + max(i, n)").evaluate({.x = 3, .row = 0, .i = 1, .n = 4}), 13);
}

TEST(PastedText, ReadsWhatSpreadsheetsWrite) {
  const auto print = [](std::string_view text) {
    const pasted_text lines(text);
    std::string result;
    for (std::size_t line = 0; line < lines.line_count(); ++line) {
      for (std::size_t i = 0; i < lines.field_count(line); ++i) result += "[" + std::string(lines.field(line, i)) + "]";
      result += '/';
    }
    return result;
  };
  EXPECT_EQ(print("a\tb\r\nc\n"), "[a][b]/[c]/");
  EXPECT_EQ(print("\"a\tb\"\t\"say \"\"hi\"\"\nthere\"\n"), "[a\tb][say \"hi\"\nthere]/");
  EXPECT_EQ(print("\"open\tb\n"), "[\"open][b]/");
  EXPECT_EQ(print("a\t"), "[a][]/");
  EXPECT_EQ(print("\n\n"), "[]/[]/");
  EXPECT_EQ(print(""), "");
}

} // namespace
} // namespace vesk
