#include "charts/graph_form.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vesk {
namespace {

constexpr double day_of_1_october_2012 = 15614; // since 1970

std::unique_ptr<general_graph_data> series(std::vector<double> x, std::vector<double> y) {
  auto data = std::make_unique<general_graph_data>(static_cast<std::int32_t>(x.size()));
  data->x = std::move(x);
  data->y = std::move(y);
  data->label = "Flow";
  return data;
}

// 100 days of values from 0 to 10, in a plot of 1000 by 100 pixels.
struct GraphForm : testing::Test {
  GraphForm() {
    graph.add_series(series({day_of_1_october_2012, day_of_1_october_2012 + 100}, {0, 10}));
    graph.set_plot_rectangle({0, 0, 1000, 100});
  }
  void drag(TGraphForm::mouse_button button, double x1, double y1, double x2, double y2) {
    graph.press(button, x1, y1);
    graph.move(x2, y2);
    graph.release(x2, y2);
  }
  double begin() const { return graph.bounds().x_minimum - day_of_1_october_2012; }
  double end() const { return graph.bounds().x_maximum - day_of_1_october_2012; }

  TGraphForm graph;
};
using enum TGraphForm::mouse_button;

TEST_F(GraphForm, TitleNarrowsWithTheView) {
  EXPECT_EQ(graph.header(), "2012 through 2013");
  drag(left, 0, 50, 500, 50); // to 20 November
  EXPECT_EQ(graph.header(), "October through November, 2012");
  drag(left, 0, 50, 200, 50); // ten days
  EXPECT_EQ(graph.header(), "October 2012");
  drag(left, 0, 50, 50, 50); // half a day
  EXPECT_EQ(graph.header(), "October 1 2012");
  TGraphForm titled("Oak City");
  titled.add_series(series({day_of_1_october_2012, day_of_1_october_2012 + 1}, {0, 1}));
  EXPECT_EQ(titled.header(), "Oak City  - October 2012");
}

TEST_F(GraphForm, ZoomsBySteps) {
  const double_sextuple all = graph.bounds();
  EXPECT_DOUBLE_EQ(all.first_minimum, -0.5);
  EXPECT_DOUBLE_EQ(all.first_maximum, 10.5);
  drag(left, 600, 50, 200, 50); // backwards moves the left edge
  EXPECT_DOUBLE_EQ(begin(), 20);
  EXPECT_DOUBLE_EQ(end(), 60);
  drag(right, 10, 20, 10, 60);
  EXPECT_DOUBLE_EQ(graph.bounds().first_maximum, -0.5 + 11 * 0.8);
  EXPECT_DOUBLE_EQ(graph.bounds().first_minimum, -0.5 + 11 * 0.4);
  EXPECT_EQ(graph.bounds().first_maximum, graph.bounds().second_maximum);
  graph.unzoom_by_one_level();
  graph.unzoom_by_one_level();
  EXPECT_EQ(graph.bounds(), all);
  graph.unzoom_by_one_level(); // nothing left
  EXPECT_EQ(graph.bounds(), all);
  drag(left, 100, 50, 200, 50);
  drag(left, 100, 50, 200, 50);
  graph.unzoom_completely();
  EXPECT_EQ(graph.bounds(), all);
}

TEST_F(GraphForm, AClickOrADragOutOfThePlotZoomsNothing) {
  drag(left, 100, 50, 102, 50);
  drag(left, 100, 50, 1200, 50);
  drag(right, -5, 50, 10, 60);
  EXPECT_EQ(graph.zoom_levels(), 0U);
}

TEST_F(GraphForm, AValueZoomCanChooseItsAxisByTheMouse) {
  graph.y_zoom_axes = 0;
  drag(right, 100, 20, 100, 60);
  EXPECT_NE(graph.bounds().first_maximum, graph.bounds().second_maximum);
  graph.unzoom_completely();
  drag(right, 500, 20, 500, 60);
  EXPECT_EQ(graph.bounds().first_maximum, graph.bounds().second_maximum);
}

TEST_F(GraphForm, PagesByWholeWidths) {
  drag(left, 350, 50, 650, 50); // day 35 to 65
  graph.scroll_forward();
  EXPECT_DOUBLE_EQ(begin(), 65);
  EXPECT_DOUBLE_EQ(end(), 95);
  graph.scroll_forward(); // stops at the end, with the same width
  EXPECT_DOUBLE_EQ(begin(), 70);
  EXPECT_DOUBLE_EQ(end(), 100);
  graph.go_to_beginning_of_data();
  EXPECT_DOUBLE_EQ(end(), 30);
  graph.scroll_back();
  EXPECT_DOUBLE_EQ(begin(), 0);
  graph.go_to_end_of_data();
  EXPECT_DOUBLE_EQ(begin(), 70);
  EXPECT_EQ(graph.zoom_levels(), 1U);
  graph.unzoom_by_one_level(); // to before the zoom, not the paging
  EXPECT_DOUBLE_EQ(begin(), 0);
  EXPECT_DOUBLE_EQ(end(), 100);
}

TEST_F(GraphForm, DrawsUnsortedPointsInTimeOrder) {
  EXPECT_FALSE(graph.was_unsorted());
  graph.add_series(series({3, 1, 2}, {30, 10, 20}));
  EXPECT_TRUE(graph.was_unsorted());
  EXPECT_EQ(graph.series()[1]->y, (std::vector<double>{10, 20, 30}));
}

TEST_F(GraphForm, BoundsOfFewOrUndrawnValues) {
  TGraphForm one;
  one.add_series(series({5}, {2}));
  EXPECT_EQ(one.bounds(), (double_sextuple{4, 6, 1, 3, 1, 3}));
  TGraphForm holes;
  holes.add_series(series({0, 1, 2, 3}, {hole_value, std::nan(""), 5, 7}));
  EXPECT_DOUBLE_EQ(holes.bounds().first_maximum, 7.1);
  TGraphForm wide;
  wide.add_series(series({0, 1}, {-9e307, 9e307}));
  EXPECT_TRUE(std::isfinite(wide.bounds().first_maximum));
  auto plain = series({1, 2}, {0, 0});
  plain->not_a_date_axis = 1;
  TGraphForm numbers;
  numbers.add_series(std::move(plain));
  EXPECT_EQ(numbers.header(), "");
}

TEST_F(GraphForm, FindsThePointUnderTheMouse) {
  const double bottom = 100 - 0.5 / 11 * 100; // where 0 is
  const auto point = graph.point_at(3, bottom + 2, 8);
  ASSERT_TRUE(point);
  EXPECT_EQ(point->point, 0U);
  EXPECT_FALSE(graph.point_at(500, 50, 8));
}

TEST_F(GraphForm, ALiveChartKeepsItsZoom) {
  graph.replace_series(series({day_of_1_october_2012, day_of_1_october_2012 + 50}, {0, 1}));
  EXPECT_DOUBLE_EQ(end(), 50);
  drag(left, 0, 50, 500, 50);
  graph.replace_series(series({day_of_1_october_2012, day_of_1_october_2012 + 80}, {0, 9}));
  EXPECT_DOUBLE_EQ(end(), 25);
  graph.unzoom_by_one_level(); // to all of the new points
  EXPECT_DOUBLE_EQ(end(), 80);
  drag(left, 0, 50, 500, 50);
  auto another = series({day_of_1_october_2012 + 200, day_of_1_october_2012 + 300}, {0, 9});
  another->label = "Light";
  graph.replace_series(std::move(another));
  EXPECT_DOUBLE_EQ(begin(), 200);
  EXPECT_EQ(graph.zoom_levels(), 0U);
}

TEST_F(GraphForm, ZoomsInFromTheKeyboard) {
  graph.zoom_in_time();
  EXPECT_DOUBLE_EQ(begin(), 25);
  EXPECT_DOUBLE_EQ(end(), 75);
  graph.zoom_in_value();
  EXPECT_DOUBLE_EQ(graph.bounds().first_minimum, 2.25);
  EXPECT_DOUBLE_EQ(graph.bounds().second_maximum, 7.75);
  graph.unzoom_by_one_level();
  EXPECT_DOUBLE_EQ(graph.bounds().first_maximum, 10.5);
  for (int i = 0; i < 100; ++i) graph.zoom_in_time();
  EXPECT_LT(begin(), end());
}

} // namespace
} // namespace vesk
