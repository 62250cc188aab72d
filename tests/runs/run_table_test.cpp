#include "runs/run_table.h"
#include "runs/value_list.h"
#include "sample_data_set.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <span>
#include <sstream>

namespace vesk {
namespace {

using numbers = std::vector<std::size_t>;

class RunTable : public testing::Test {
protected:
  csv_table table(const std::string& text) {
    folder.write("t.csv", text);
    return read_csv_table(folder.path / "t.csv");
  }
  std::string failure_of(const std::function<void()>& work) {
    try {
      work();
    } catch (const value_error& error) {
      const std::string text = error.what(), file = folder.file("t.csv");
      return text.starts_with(file) ? text.substr(file.size()) : text;
    }
    return "";
  }

  const prevesk_dataset_data_type data = sample_data_set();
  temporary_folder folder;
};

TEST_F(RunTable, AColumnIsAPathOrTheNameOfAParameter) {
  const csv_table parameters = table("name,path\n\"Volume, first\",segment.0.volume\nmain,flow.5.0*=\n");
  const run_table runs(
      table("\xef\xbb\xbfid, \"Volume, first\" ,main,end\r\na-1,5,\"2\",2000-03-01\r\n\r\nb,6,3,2000-04-01"),
      &parameters, data);
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_EQ(runs.folder(0), "a-1");
  const auto second = runs.assignments(data, 1);
  ASSERT_EQ(second.size(), 3U);
  EXPECT_EQ(second[0].ref.path, "segment.0.volume");
  EXPECT_EQ(second[0].number, 6);
  EXPECT_EQ(second[1].how, assignment_operator::multiply);
  EXPECT_EQ(run_table(table("max_dt\n1\n2\n"), nullptr, data).folder(1), "1");
  EXPECT_EQ(run_table(table("time_function.1,time_function.2*=\na.csv,2\n"), nullptr, data).series_from_files(data),
            (std::vector<series_ref>{{series_kind::time_function, 0, 0}}));
}

TEST_F(RunTable, WhatIsWrongIsNamed) {
  const auto failure = [&](const std::string& text) {
    return failure_of([&] { run_table(table(text), nullptr, data).assignments(data, 0); });
  };
  EXPECT_EQ(failure(""), " is empty; expected a line with the names of columns.");
  EXPECT_EQ(failure("max_dt\n"), " has no rows; row 0 was requested.");
  EXPECT_EQ(failure(std::string("m\0a\0", 4)), " has null characters, as in UTF-16; save it as CSV in UTF-8.");
  EXPECT_EQ(failure("max_dt,min_dt\n1\n"), ", line 2: expected 2 fields, found 1.");
  EXPECT_EQ(failure("max_dt\n1,2\n"), ", line 2: expected 1 field, found 2.");
  EXPECT_EQ(failure("id;max_dt\na;0,1\n"), ", line 1: expected commas between the columns, found semicolons. Numbers "
                                           "have a decimal point, as in 0.1.");
  EXPECT_EQ(
      failure("id,constant.{CBOD rate, a, 1/day}*=\na,1\n"),
      ", line 1: the comma in {CBOD rate, a, 1/day} separates columns: put quotation marks around the whole path.");
  EXPECT_EQ(failure("max_dt\n\"1\n"), ", line 2: a quotation mark is not closed.");
  EXPECT_EQ(failure("max_dt\n1\"\n"), ", line 2: a quotation mark inside a field that is not quoted.");
  EXPECT_EQ(failure("max_dt,max_dt\n1,1\n"), ", line 1: the column max_dt occurs more than once.");
  EXPECT_EQ(failure("max_dt,max_dt*=\n1,1\n"), ", column max_dt*=: max_dt is set by more than one column.");
  EXPECT_EQ(failure("maxdt\n1\n"), ", column maxdt: Unknown path maxdt; the nearest is max_dt.");
  EXPECT_EQ(failure("id;max_dt\na;1\n"), ", line 1: expected commas between the columns, found semicolons. Numbers "
                                         "have a decimal point, as in 0.1.");
  EXPECT_EQ(failure("segment.9.volume\n1\n"),
            ", column segment.9.volume: there is no segment 9; the nearest is 2 (Reach 3).");
  const std::string long_value = failure("max_dt\n" + std::string(1 << 20, 'x') + "\n");
  EXPECT_LT(long_value.size(), 4000U);
  EXPECT_TRUE(long_value.ends_with("xxx\"."));
  EXPECT_EQ(failure("max_dt\ninf\n"), ", row 0: max_dt: expected a finite number, found \"inf\".");
  EXPECT_EQ(failure("id,max_dt\na,\n"), ", row 0 (a): max_dt: expected a finite number, found nothing.");
  EXPECT_EQ(failure("id,max_dt\n../a,1\n"),
            ", row 0: \"../a\" cannot name a folder; use letters, digits, points, hyphens and underscores.");
  EXPECT_EQ(failure("row,max_dt\na,1\na,2\n"), ": two rows have the row a.");
}

TEST_F(RunTable, WrittenFieldsAreReadBack) {
  const std::vector<std::string> fields{" a", "b\t", "c,\"d\"\r\n", "", "\xc3\xa4"};
  std::string line = "1";
  for (const std::string& field : fields) line += "," + csv_field(field);
  const csv_table read = table("1,2,3,4,5,6\n" + line + "\n");
  EXPECT_TRUE(std::ranges::equal(std::span(read.rows.at(0)).subspan(1), fields));
}

TEST_F(RunTable, RowNumbers) {
  EXPECT_EQ(parse_row_numbers("0,4,7-9"), (numbers{0, 4, 7, 8, 9}));
  for (const char* wrong : {"", "a", "3-", "-3", "5-4", "1,", "0-99999999999", "0-5000000,0-5000000"})
    EXPECT_THROW(parse_row_numbers(wrong), value_error) << wrong;
  EXPECT_EQ(failure_of([] { parse_row_numbers("1,5-0"); }), "Rows 5-0: the first one is greater than the last.");
  EXPECT_EQ(failure_of([] { parse_row_numbers("-1"); }), "Expected the numbers of rows, as in 0-24, found \"-1\".");
}

TEST_F(RunTable, TheListOfParametersIsATableOfThem) {
  std::string list;
  list_parameters(data, [&](const std::string& line) { list += line; });
  const csv_table parameters = table(list);
  EXPECT_EQ(parameters.rows[0],
            (std::vector<std::string>{"Temperature coefficient", "constant.31", "-1", "99", "1.047", "none", "0.01"}));
  EXPECT_NE(list.find("\"Rain, Main stem\",flow.5.0*=,,,1,none,0.01\n"), list.npos) << list;
  const run_table runs(table("Temperature coefficient\n5\n"), &parameters, data);
  EXPECT_EQ(runs.assignments(data, 0)[0].ref.path, "constant.31");
}

} // namespace
} // namespace vesk
