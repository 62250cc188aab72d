#include "open_session.h"
#include "viewer/agreement_list.h"
#include "viewer/measured_form.h"

#include <gmock/gmock.h>

namespace vesk {
namespace {

namespace fs = std::filesystem;

class AgreementList : public OpenSession {
protected:
  AgreementList() {
    folder.write("gauge.csv", "time,oxygen\n2000-01-01T12:00:00,6\n2000-01-02T12:00:00,<14\n2000-01-03T00:00:00,20\n");
    series.variable = "DO";
    series.segment = "s1";
    series.query.file_name = "gauge.csv";
    series.query.date_time_field = "time";
    series.query.value_field = "oxygen";
  }
  std::string words(std::size_t scenario = 0) const { return in_words(list.outcomes().at(scenario)); }

  agreement_list list{session};
  measured_series series;
};

TEST_F(AgreementList, ScoresEachScenario) {
  open("river.nc");
  fs::path new_file;
  list.OnNewFile = [&](const fs::path& file) { new_file = file; };
  list.add(series);
  settle();
  EXPECT_EQ(new_file, folder.path / "river.measured.json");
  EXPECT_EQ(words(), "river: 2 pairs of 3 measured values; 1 below a detection limit left out.");
  score_table scores;
  scores.show(list.outcomes(), true);
  ASSERT_EQ(scores.row_count(), 2U); // the model, and the monthly means
  EXPECT_EQ(std::get<double>(scores.value(0, 2)), 2);
  EXPECT_EQ(std::get<double>(scores.value(0, 5)), -0.5); // 5 for 6, 20 for 20
  EXPECT_EQ(agreement_chart(list.outcomes(), "g/m3")->series().size(), 2U);
  const auto scatter = agreement_scatter(list.outcomes(), "g/m3");
  EXPECT_THAT(scatter->series()[0]->x, testing::ElementsAre(6, 20));
  EXPECT_EQ(scatter->x_title(), "measured, g/m3");
  open("river.previous.nc");
  session.set_baseline(1); // the same measured series
  settle();
  ASSERT_EQ(list.outcomes().size(), 2U);
  EXPECT_EQ(words(1), "river.previous: 2 pairs of 3 measured values; 1 below a detection limit left out.");
  list.remove(0);
  EXPECT_TRUE(read_measured_file(folder.path / "river.measured.json").empty());
}

TEST_F(AgreementList, SaysWhatCannotBeCompared) {
  open("river.nc");
  list.add(series);
  const auto failure = [&](measured_series changed) {
    list.replace(0, changed);
    settle();
    return words();
  };
  measured_series other = series;
  other.units = "mg/l";
  EXPECT_THAT(failure(other), testing::HasSubstr("measured in \"mg/l\", but DO is in \"g/m3\""));
  other = series;
  other.from = *moment_of_text("2020-01-01");
  EXPECT_THAT(failure(other), testing::HasSubstr("has no measured value in the period that is compared."));
  other = series;
  other.query.file_name = "gone.csv";
  EXPECT_THAT(failure(other), testing::HasSubstr("gone.csv"));
  folder.write("river.measured.json", "{");
  session.rename(0, "x"); // everything is read again
  EXPECT_THAT(list.note(), testing::HasSubstr("river.measured.json"));
  EXPECT_THROW(list.add(series), measured_file_exception);
  EXPECT_EQ(folder.read("river.measured.json"), "{");
}

TEST(MeasuredForm, ChecksItsEntries) {
  measured_form form;
  EXPECT_EQ(form.message(), "Choose the table that has the measured values.");
  form.query.file_name = "gauge.csv";
  form.query.date_time_field = "time";
  form.query.value_field = "oxygen";
  form.variable = "DO";
  form.segment = "s1";
  form.factor = "1,5";
  EXPECT_EQ(form.message(), "Factor: expected a number other than 0, found \"1,5\".");
  form.factor = "1.5";
  form.gap = "-1";
  EXPECT_EQ(form.message(), "Gap: expected a number of days above 0, found \"-1\".");
  form.gap = "";
  form.from = "2012-13-01";
  EXPECT_EQ(form.message(), "From: expected a date such as 2011-10-01, found \"2012-13-01\".");
  form.from = "2012-10-02";
  form.to = "2012-10-01";
  EXPECT_EQ(form.message(), "From is after To.");
  form.to = "2012-10-03";
  form.kind = 1;
  EXPECT_EQ(form.message(), "");
  const measured_form again = measured_form::of(form.series());
  EXPECT_EQ(again.factor, "1.5");
  EXPECT_EQ(again.to, "2012-10-03T00:00:00");
  EXPECT_EQ(again.kind, 1U);
  EXPECT_EQ(again.table_text(), "gauge.csv, field oxygen");
}

} // namespace
} // namespace vesk
