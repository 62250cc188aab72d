// NAME.measured.json, its tables, and the comparison.
#include "platform/file_io.h"
#include "query/query_exceptions.h"
#include "results/comparison.h"
#include "temporary_folder.h"
#include "written_results.h"

#include <gmock/gmock.h>

#include <cmath>

namespace vesk {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* whole_file = R"({
  "version": 1,
  "series": [
    {
      "name": "Oxygen at the bridge",
      "variable": "DO",
      "segment": "s2",
      "units": "mg/l",
      "factor": 0.5,
      "kind": "daily mean",
      "pairing": "nearest",
      "gap_days": 3.0,
      "from": "2000-01-01T00:00:00",
      "to": "2000-12-31T12:30:00",
      "query": {
        "name": "bridge",
        "file_name": "bridge.csv",
        "table_name": "",
        "average_duplicates": false,
        "date_time_field": "sampled",
        "value_field": "oxygen",
        "conditions": [
          {
            "field_name": "site",
            "conjunction": 0,
            "comparison": 0,
            "value_text": "A"
          }
        ]
      }
    }
  ]
}
)";

class Measured : public testing::Test {
protected:
  std::string refused(const std::string& content) const {
    folder.write("river.measured.json", content);
    try {
      read_measured_file(file);
    } catch (const measured_file_exception& error) {
      const std::string sentence = error.what();
      return sentence.starts_with(file + ": ") ? sentence.substr(file.size() + 2) : sentence;
    }
    return "";
  }
  // The whole file with one text exchanged.
  static std::string with(const std::string& old, const std::string& other) {
    std::string content = whole_file;
    return content.replace(content.find(old), old.size(), other);
  }
  measured_series series(const std::string& table) const {
    folder.write("bridge.csv", table);
    measured_series result{.name = "bridge", .variable = "DO", .segment = "s2"};
    result.query.file_name = "bridge.csv";
    result.query.date_time_field = "sampled", result.query.value_field = "oxygen";
    return result;
  }
  std::string compared(const measured_series& of) const {
    written_results{}.write(folder.file("river.nc"));
    try {
      compare(results_file(folder.file("river.nc")), of, {}, folder.path);
    } catch (const std::exception& error) {
      return error.what();
    }
    return "";
  }

  temporary_folder folder;
  std::string file = folder.file("river.measured.json");
};

TEST_F(Measured, TheFileIsWrittenAsItIsRead) {
  EXPECT_EQ(measured_file_of(folder.file("river.vki")), file);
  EXPECT_EQ(measured_file_of(folder.file("river.nc")), file);
  folder.write("river.measured.json", whole_file);
  const auto read = read_measured_file(file);
  ASSERT_EQ(read.size(), 1u);
  EXPECT_EQ(read[0].rules.kind, measured_kind::daily_mean);
  EXPECT_EQ(read[0].rules.way, pairing_way::nearest);
  EXPECT_EQ(read[0].query.conditions.size(), 1u);
  write_measured_file(file, read);
  EXPECT_EQ(folder.read("river.measured.json"), whole_file);
  write_measured_file(file, {});
  EXPECT_TRUE(read_measured_file(file).empty());
}

TEST_F(Measured, FaultsOfTheFileAreNamedWithTheirPlace) {
  EXPECT_THAT(refused("{"), HasSubstr("parse error at line 1"));
  EXPECT_EQ(refused("[]"), "expected an object.");
  EXPECT_EQ(refused("{}"), "version: expected 1.");
  EXPECT_EQ(refused("{\"version\": 2}"), "version: version 2 is newer than this program; expected 1.");
  EXPECT_EQ(refused("{\"version\": 1, \"serie\": []}"), "serie: unknown member.");
  EXPECT_EQ(refused("{\"version\": 1, \"series\": {}}"), "series: expected an array.");
  EXPECT_EQ(refused(with("\"DO\"", "7")), "series[0].variable: expected a text.");
  EXPECT_EQ(refused(with("0.5", "0")), "series[0].factor: expected a number other than 0.");
  EXPECT_EQ(refused(with("daily mean", "daily")),
            "series[0].kind: expected \"point\", \"daily mean\" or \"monthly mean\", found \"daily\".");
  EXPECT_EQ(refused(with("2000-12-31T12:30:00", "2000-02-30")),
            "series[0].to: expected a date such as \"2011-10-01\" or \"2011-10-01T06:30:00\", found \"2000-02-30\".");
  EXPECT_EQ(refused(with("\"comparison\": 0", "\"comparison\": -1")),
            "series[0].query.conditions[0].comparison: expected a whole number.");
  EXPECT_EQ(refused(with("bridge.csv", "")), "series[0].query.file_name: expected the name of a file.");
  EXPECT_EQ(refused(std::string((16 << 20) + 1, ' ')), "larger than 16 MB.");
  EXPECT_EQ(refused(std::string(100'000, '[')).substr(0, 11), "parse error");
  EXPECT_THROW(read_measured_file(folder.file("none.json")), file_open_exception);
}

TEST_F(Measured, LimitsOfDetectionAreReadFromTheTable) {
  const auto read = read_measured_values(series("sampled,oxygen\n2000-01-03,0.5\n2000-01-01,<0.02\n2000-01-02,NA\n"
                                                "2000-01-04,< 0.1\n,7\n2000-01-05,lost\n"),
                                         folder.path);
  EXPECT_EQ(read.without_value, 3u);
  ASSERT_EQ(read.values.size(), 3u);
  EXPECT_EQ(read.values[0].value, 0.02);
  EXPECT_TRUE(read.values[0].below_limit);
  EXPECT_EQ(read.values[1].value, 0.5);
  EXPECT_FALSE(read.values[1].below_limit);
  EXPECT_TRUE(read.values[2].below_limit);
}

TEST_F(Measured, ValuesOfOneMomentAreAveragedWhereTheQueryWantsIt) {
  measured_series of = series("sampled,oxygen\n2000-01-02,1\n2000-01-02,3\n2000-01-03,5\n");
  of.query.average_duplicates = true;
  ASSERT_EQ(read_measured_values(of, folder.path).values.size(), 2u);
  EXPECT_EQ(read_measured_values(of, folder.path).values[0].value, 2);
  of.query.average_duplicates = false;
  EXPECT_EQ(read_measured_values(of, folder.path).values.size(), 3u);
}

// The model has 1, 11 and 21 in segment s2 on the first three days of 2000.
TEST_F(Measured, ResultsAreHeldAgainstATable) {
  written_results{}.write(folder.file("river.nc"));
  const results_file results(folder.file("river.nc"));
  measured_series of = series("sampled,oxygen\n2000-01-01,4\n2000-01-02 12:00,30\n2000-01-03,40\n2000-01-04,50\n");
  of.units = "mg/l", of.factor = 0.5;
  folder.write("others.csv", "time,site,guess\n2000-01-01,A,2\n2000-01-03,A,25\n2000-01-04,B,77\n");
  const auto others = read_estimates("others.csv", folder.path);
  ASSERT_EQ(others.size(), 1u);
  const comparison found = compare(results, of, others, folder.path);
  EXPECT_EQ(found.measured, 4u);
  EXPECT_EQ(found.paired.without_model, 1u);
  const auto whole = [&](std::size_t k) { return found.estimates[k].periods.back().scores; };
  ASSERT_EQ(found.estimates.size(), 3u);
  EXPECT_EQ(found.estimates[0].name, "model");
  EXPECT_EQ(whole(0).count, 3u);
  EXPECT_DOUBLE_EQ(*whole(0).bias, (1 + 16 + 21) / 3.0 - (2 + 15 + 20) / 3.0);
  EXPECT_EQ(found.estimates[1].name, "guess");
  EXPECT_EQ(whole(1).count, 3u); // 19.25 on the second, between its own values
  EXPECT_DOUBLE_EQ(*whole(1).bias, (2 + 19.25 + 25) / 3.0 - (2 + 15 + 20) / 3.0);
  EXPECT_EQ(found.estimates[2].name, "the mean of each month as measured");
  EXPECT_NEAR(*whole(2).bias, 0, 1e-12);
  of.from = 36527, of.to = 36528;
  EXPECT_EQ(compare(results, of, {}, folder.path).measured, 2u);
}

TEST_F(Measured, WhatCannotBeComparedIsSaidInOneSentence) {
  measured_series of = series("sampled,oxygen\n2000-01-01,4\n");
  EXPECT_EQ(compared(of), ""); // one point serves
  of.units = "mg/l";
  EXPECT_EQ(compared(of),
            "bridge: measured in \"mg/l\", but DO is in \"g/m3\"; give the factor between them, which is 1 for "
            "two names of one unit.");
  of.factor = 1;
  EXPECT_EQ(compared(of), "");
  of.from = 36600;
  EXPECT_EQ(compared(of), "bridge: has no measured value in the period that is compared.");
  EXPECT_EQ(compared(series("sampled,oxygen\n2010-01-01,4\n")),
            "bridge: has no measured value at a time for which the results, which cover 2000-01-01T00:00:00 to "
            "2000-01-03T00:00:00, have one.");
  EXPECT_EQ(compared(series("sampled,oxygen\n2000-01-01,<4\n2000-01-02,<4\n")),
            "bridge: has only values below a detection limit.");
  of = series("sampled,oxygen\n2000-01-01,4\n");
  of.segment = "s9";
  EXPECT_THAT(compared(of), HasSubstr("has no segment \"s9\""));
  of.segment = "s1", of.query.value_field = "phosphate";
  EXPECT_THAT(compared(of), HasSubstr("non-existent field 'phosphate'"));
}

} // namespace
} // namespace vesk
