#include "charts/csv_text.h"
#include "open_session.h"
#include "viewer/chart_rows.h"
#include "viewer/differences.h"
#include "viewer/live_samples.h"
#include "viewer/series_charts.h"
#include "viewer/series_table.h"

#include <gmock/gmock.h>

namespace vesk {
namespace {

using testing::ElementsAre;

class ShownValues : public OpenSession {
protected:
  series_store store{session};

  std::vector<std::string> labels() const {
    std::vector<std::string> found;
    for (const shown_series& it : store.series()) found.push_back(it.label(true));
    return found;
  }
};

TEST_F(ShownValues, FollowTheChoice) {
  open("river.nc");
  session.choose("DO", "s3");
  settle();
  ASSERT_THAT(labels(), ElementsAre("DO, s1, river", "DO, s3, river"));
  EXPECT_THAT(*store.series()[1].values, ElementsAre(2, 12, 22));
  const std::size_t colour = store.series()[1].colour;
  open("half.nc", {.segments = 2, .values = {0, 5, 10, 15, 20, 25}});
  EXPECT_THAT(labels(), ElementsAre("DO, s1, river", "DO, s1, half", "DO, s3, river"));
  EXPECT_EQ(store.note(), "1 series is not shown: the scenario has no such variable or segment.");
  session.segments.chosen[0] = false;
  session.selection_was_changed();
  settle();
  EXPECT_THAT(labels(), ElementsAre("DO, s3, river"));
  EXPECT_EQ(store.series()[0].colour, colour);
}

TEST_F(ShownValues, KeepTheirColoursFromStartToStart) {
  using testing::Each;
  using testing::Lt;
  const std::string settings = folder.file("settings.ini");
  folder.write("settings.ini", "[SOFTWARE\\TALMO\\VESK\\7.0]\nPostProcessor=mine\n");
  {
    kept_colours first(settings);
    EXPECT_THAT(first.colours_of({{"DO", "s1"}, {"DO", "s=2"}}), ElementsAre(0, 1));
    EXPECT_THAT(first.colours_of({{"BOD", "s1"}, {"DO", "s=2"}}), ElementsAre(0, 1)); // the first one shown is free
    first.save();
  }
  kept_colours second(settings);
  EXPECT_THAT(second.colours_of({{"NH4", "s1"}, {"DO", "s=2"}, {"BOD", "s1"}}), ElementsAre(2, 1, 0));
  EXPECT_THAT(second.colours_of({{"DO", "s1"}, {"BOD", "s1"}}), ElementsAre(0, 1)); // two of one colour
  EXPECT_THAT(second.colours_of({{"BOD", "s1"}}), ElementsAre(1));                  // for good
  std::vector<kept_colours::names> many;
  for (int i = 0; i < 300; ++i) many.emplace_back("DO", std::to_string(i));
  EXPECT_THAT(second.colours_of(many), Each(Lt(kept_colours::palette)));
  second.save();
  EXPECT_NE(folder.read("settings.ini").find("PostProcessor=mine"), std::string::npos);
  EXPECT_THAT(kept_colours(settings).colours_of({{"DO", "105"}, {"DO", "115"}}), ElementsAre(5, 0));
  folder.write("settings.ini",
               "[SOFTWARE\\TALMO\\VESK\\7.0\\SeriesColours]\nSeries1=x\nSeries2=77\tDO\ts1\nSeries3=2\n");
  EXPECT_THAT(kept_colours(settings).colours_of({{"DO", "s1"}}), ElementsAre(0));
}

TEST_F(ShownValues, AreLimited) {
  open("river.nc", {.times = 300'000, .segments = 40, .is_filled = false});
  EXPECT_TRUE(session.scenarios().empty());                       // times without values are refused
  open("long.nc", {.times = 300'000, .segments = 40, .type = 1}); // bytes
  session.segments.chosen.assign(40, true);
  session.selection_was_changed();
  settle();
  EXPECT_EQ(store.series().size(), 33U);
  EXPECT_EQ(store.note(),
            "The choice has more than 10 million values. Only the first of its series are shown; choose fewer.");
}

TEST_F(ShownValues, MakeATableInEitherOrder) {
  open("river.nc", {.values = {0, 0.04, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23}}); // in single precision
  session.choose("DO", "s2");
  settle();
  series_table table;
  const auto& file = session.scenarios()[0].file;
  table.show({file, &file->times()}, store.series(), false, column_order::by_segment);
  std::string text;
  write_csv(table, [&](std::string_view piece) { text += piece; });
  EXPECT_EQ(text, "Date,Time,s1 DO (g/m3),s2 DO (g/m3)\n"
                  "2000-01-01,00:00:00,0,0.04\n2000-01-02,00:00:00,10,11\n2000-01-03,00:00:00,20,21\n");
}

TEST_F(ShownValues, DifferFromTheBaseline) {
  open("river.nc");
  open("changed.nc",
       {.times = 2, .segments = 4, .units = "days since 2000-01-01 12:00", .values = {1, 1, 1, 1, 31, 1, 1, 1}});
  const auto found = differences(store.series(), 0);
  ASSERT_EQ(found.size(), 1U);
  const auto& values = *found[0].values; // 2000-01-02 lies between times of the other one
  EXPECT_TRUE(std::isnan(values[0]) && std::isnan(values[2]));
  EXPECT_EQ(values[1], 16 - 10);
  difference_summary summary;
  summary.show(found, store.series(), 0);
  EXPECT_EQ(std::get<std::string>(summary.value(0, 0)), "changed");
  EXPECT_EQ(std::get<double>(summary.value(0, 3)), 10); // of the baseline over all its times
  EXPECT_EQ(std::get<double>(summary.value(0, 6)), 6);
  EXPECT_EQ(std::get<std::string>(summary.value(0, 7)), "2000-01-02T00:00:00");
}

TEST_F(ShownValues, HaveAChartForEachUnitThatZoomTogether) {
  open("river.nc");
  auto series = store.series();
  ASSERT_EQ(series.size(), 1U);
  series.push_back(series[0]);
  series[1].units = "degC";
  series[1].variable = "temperature";
  chart_rows rows;
  rows.show(charts_by_unit(series, false, {"DO, s1"}));
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[1].value_title(), "temperature, degC");
  EXPECT_TRUE(rows[0].series()[0]->is_hidden());
  rows[0].set_plot_rectangle({0, 0, 100, 100});
  rows[0].press(TGraphForm::mouse_button::left, 0, 50);
  rows[0].release(50, 50);
  rows.row_moved(0);
  const double middle = (rows[0].data_begin() + rows[0].data_end()) / 2;
  EXPECT_EQ(rows[1].bounds().x_maximum, middle);
  rows.scroll_forward();
  EXPECT_EQ(rows[1].bounds().x_minimum, middle);
  rows.show(charts_by_unit(series, false, {})); // the same charts again
  EXPECT_EQ(rows[0].bounds().x_minimum, middle);
  rows.unzoom_by_one_level();
  EXPECT_FALSE(rows.is_zoomed());
  EXPECT_EQ(rows[1].bounds().x_maximum, rows[1].data_end());
}

TEST(LiveSamples, AreTakenOncePerTimeAndEndWithTheRun) {
  live_samples live;
  double value = 1;
  const auto read = [&](int row, int) { return row == 0 ? std::optional(value) : std::nullopt; };
  const std::vector<live_cell> cells{{0, 2, "DO, row 1"}, {9, 2, "DO, row 10"}};
  EXPECT_TRUE(live.sample(days_to_1970 + 10, cells, read));
  EXPECT_FALSE(live.sample(days_to_1970 + 10, cells, read));
  value = 2;
  EXPECT_TRUE(live.sample(days_to_1970 + 11, cells, read));
  const auto chart = live.chart();
  ASSERT_EQ(chart->series().size(), 1U);
  EXPECT_THAT(chart->series()[0]->x, ElementsAre(10, 11));
  EXPECT_THAT(chart->series()[0]->y, ElementsAre(1, 2));
  EXPECT_TRUE(live.sample(days_to_1970 + 10, cells, read)); // an earlier time: a new run
  EXPECT_THAT(live.chart()->series()[0]->y, ElementsAre(2));
}

} // namespace
} // namespace vesk
