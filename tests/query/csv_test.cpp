// How text files are understood: separator, header, forms of numbers and dates, and what is refused.
#include "query/sources/text/csv_source.h"
#include "table_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vesk {

namespace {

using testing::ElementsAre;

std::vector<std::string> read(std::string_view text) {
  const auto source = open_csv(std::as_bytes(std::span(text)), "river.csv");
  return print(*source);
}

std::string failure(std::string_view text) {
  try {
    read(text);
  } catch (const table_source_exception& error) {
    return error.what();
  }
  return "read";
}

TEST(Csv, FindsSeparatorAndDecimalSign) {
  EXPECT_THAT(read("site;flow\nA;3,5\nB;4\n"), ElementsAre("site:1; flow:6", "A; 3.5", "B; 4"));
  EXPECT_THAT(read("site\tflow\nA\t1,234.5\nB\t-.5\r\n"), ElementsAre("site:1; flow:6", "A; 1234.5", "B; -0.5"));
  EXPECT_THAT(read("a|b\r1|2\r3|4"), ElementsAre("a:3; b:3", "1; 2", "3; 4"));
  EXPECT_THAT(read("# note\r# more\r\r# last\rflow\r12"), ElementsAre("flow:3", "12"));
  EXPECT_THAT(read("flow\n12\n13\n"), ElementsAre("flow:3", "12", "13"));
}

// In UTF-8, as the narrow one, and in Windows-1252.
TEST(Csv, PassesOverNoBreakSpacesAroundNumbers) {
  EXPECT_THAT(read("n;t\n\xc2\xa0"
                   "1,5;\xc2\xa0x\n\xe2\x80\xaf\xc2\xa0"
                   "2,5\xc2\xa0;voil\xc3\xa0\n\xc2\xa0;y\n"),
              ElementsAre("n:6; t:1", "1.5; \xc2\xa0x", "2.5; voilà", "NULL; y"));
  EXPECT_THAT(read("n;t\n\xa0"
                   "1;\xe9\n\xa0\xa0"
                   "2\xa0;x\n"),
              ElementsAre("n:3; t:1", "1; é", "2; x"));
}

TEST(Csv, DropsTheApostropheThatKeepsANameOfResultsFromBeingAFormula) {
  EXPECT_THAT(read("time,'=A1,\"'-1, 2\",'@x,'tis,'\n2011-02-01,1,2,3,4,5\n"),
              ElementsAre("time:9; =A1:3; -1, 2:3; @x:3; 'tis:3; ':3", "2011-02-01; 1; 2; 3; 4; 5"));
}

TEST(Csv, SettlesTheOrderOfADateByTheWholeColumn) {
  EXPECT_THAT(read("d,e\n1/2/2011,1/2/2011\n3/4/2011,13/4/2011\n"),
              ElementsAre("d:9; e:9", "2011-01-02; 2011-02-01", "2011-03-04; 2011-04-13"));
  EXPECT_THAT(read("d;e\n1.2.2011 4:05;2011-02-01T23:59:59.4994Z\n31.12.99 23:00;2011/2/1\n"),
              ElementsAre("d:11; e:11", "2011-02-01 04:05:00; 2011-02-01 23:59:59", "1999-12-31 23:00:00; 2011-02-01"));
  EXPECT_THAT(
      read("d,t\n1/2/2011 12:30 AM,7:00\n1/2/2011 1:00:30 pm,24:00\n30/2/2011,x\n"),
      ElementsAre("d:11; t:10", "2011-01-02 00:30:00; 07:00:00", "2011-01-02 13:00:30; 1899-12-31", "30/2/2011; x"));
}

TEST(Csv, ReadsDatesWithTheMonthsName) {
  EXPECT_THAT(read("d,e,f\n3 Jan 2001,03-JAN-2001 6:30,\"January 3, 2001\"\n29 Sept 49,4/feb/50,Dec. 31 1999\n"),
              ElementsAre("d:9; e:11; f:9", "2001-01-03; 2001-01-03 06:30:00; 2001-01-03",
                          "2049-09-29; 1950-02-04; 1999-12-31"));
  EXPECT_THAT(
      read("d,e,f,g\n3 Janu 2001,31-Feb-2001,May 2001,May3 2001\n3-Jan 2001,Mayor 3 2001,3 mai 2001,1 May 201\n"),
      ElementsAre("d:1; e:1; f:1; g:1", "3 Janu 2001; 31-Feb-2001; May 2001; May3 2001",
                  "3-Jan 2001; Mayor 3 2001; 3 mai 2001; 1 May 201"));
}

TEST(Csv, KeepsCodesAndMixedColumnsAsTexts) {
  EXPECT_THAT(read("code,tag,value\n00300,R1,NA\n12,7,<0.5\n13,8,1\n14,R2,2\n15,9,3\n16,,4\n"),
              ElementsAre("code:1; tag:1; value:3", "00300; R1; NULL", "12; 7; <0.5", "13; 8; 1", "14; R2; 2",
                          "15; 9; 3", "16; NULL; 4"));
}

TEST(Csv, PassesTitlesAndNamesColumns) {
  EXPECT_THAT(
      read(
          "\xef\xbb\xbf\"Plot Title: Creek\"\nmade,today\n\n,Date, flow ,Flow\n1,2011-01-31,5,6\n2,2011-02-01,7,8,9\n"),
      ElementsAre("F1:3; Date:9; flow:3; Flow_1:3; F5:3", "1; 2011-01-31; 5; 6; NULL", "2; 2011-02-01; 7; 8; 9"));
  EXPECT_THAT(read("1,2\n3,4\n"), ElementsAre("F1:3; F2:3", "1; 2", "3; 4"));
}

// Rows of texts above columns of numbers and dates; the last table has none.
TEST(Csv, TakesUnitsAndFormatsForPartOfTheHeader) {
  EXPECT_THAT(read("site,date,flow\n,yyyy-mm-dd,m3/s\nA,2011-01-31,1\nB,2011-02-01,2\n"),
              ElementsAre("site:1; date:9; flow:3", "A; 2011-01-31; 1", "B; 2011-02-01; 2"));
  EXPECT_THAT(
      read("agency\tsite_no\tday\tflow\n5s\t15s\t20d\t14n\nUSGS\t0208\t2011-01-31\t\nUSGS\t0208\t2011-02-01\t7\n"),
      ElementsAre("agency:1; site_no:1; day:9; flow:3", "USGS; 0208; 2011-01-31; NULL", "USGS; 0208; 2011-02-01; 7"));
  EXPECT_THAT(read("day,Weir,,Mill\n,flow,depth,flow\n,m3/s,m,m3/s\n2011-01-31,1,2,3\n"),
              ElementsAre("day:9; Weir:3; depth:3; Mill:3", "2011-01-31; 1; 2; 3"));
  EXPECT_THAT(read("site,flow\nA,NA\nB,\nC,3\nD,<0.5\nE,5\nF,6\nG,7\n"),
              ElementsAre("site:1; flow:3", "A; NULL", "B; NULL", "C; 3", "D; <0.5", "E; 5", "F; 6", "G; 7"));
}

TEST(Csv, ReadsQuotedFieldsAndEncodings) {
  EXPECT_THAT(read("name,\"x, y\"\n\"a \"\"b\"\"\nc\", 5\" \n\"q\"r , \"r1\" \n"),
              ElementsAre("name:1; x, y:1", "a \"b\"\nc; 5\"", "qr; r1"));
  EXPECT_THAT(read("t,n\n5 \xb0\x43,1\n6 \xc2\xb0\x43,2\n"), ElementsAre("t:1; n:3", "5 °C; 1", "6 °C; 2"));
  EXPECT_THAT(read(std::string_view("\xff\xfe"
                                    "a\0,\0b\0\n\0\xb0\0,\0"
                                    "2\0\n\0",
                                    18)),
              ElementsAre("a:1; b:3", "°; 2"));
}

TEST(Csv, RefusesFilesThatAreNotTables) {
  EXPECT_EQ(failure(""), "river.csv: the file is empty.");
  EXPECT_EQ(failure(" \r\n\n"), "river.csv: the file is empty.");
  EXPECT_EQ(failure(std::string_view("a\0b", 3)), "river.csv: not a text file: it contains bytes of value 0.");
  EXPECT_EQ(failure("title\na,b\n1,2\n3,\"4\n5,6\n"), "river.csv: the quotation mark in line 4 is never closed.");
}

TEST(Csv, FiltersLeaveOutOnlyRowsThatFail) {
  const std::string_view text = "site,flow\nA,1\nB,2\na,3\nA,\n";
  const auto source = open_csv(std::as_bytes(std::span(text)), "river.csv");
  const auto numbers = [&](std::vector<row_filter> filters) {
    std::vector<std::uint64_t> rows;
    for (const auto row = source->rows(0, std::move(filters)); row->next();) rows.push_back(row->row_number());
    return rows;
  };
  using test = row_filter::test;
  EXPECT_THAT(numbers({{.field = 0, .text = "A"}}), ElementsAre(1, 4));
  EXPECT_THAT(numbers({{.field = 0, .text = "a", .ignore_case = true}}), ElementsAre(1, 3, 4));
  EXPECT_THAT(numbers({{.field = 1, .kind = test::at_least, .number = 2}}), ElementsAre(2, 3));
  EXPECT_THAT(numbers({{.field = 1, .kind = test::at_most, .number = 2}, {.field = 0, .text = "A"}}), ElementsAre(1));
  EXPECT_THAT(numbers({{.field = 1, .text = "A"}}), ElementsAre(1, 2, 3)) << "a number is not compared with a text";
}

} // namespace

} // namespace vesk
