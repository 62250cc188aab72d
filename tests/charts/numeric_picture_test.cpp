#include "charts/numeric_picture.h"

#include <gtest/gtest.h>

#include <limits>

namespace vesk {
namespace {

TEST(NumericPicture, ShowsTheDecimalsThatItHas) {
  EXPECT_EQ(number_in_picture(8.25, "############.######"), "8.250000");
  EXPECT_EQ(number_in_picture(-1234.5678, "#######.###"), "-1234.568");
  EXPECT_EQ(number_in_picture(12, "###"), "12");
  EXPECT_EQ(number_in_picture(-0.0, "####.####"), "0.0000");
}

TEST(NumericPicture, NeverCutsANumber) {
  EXPECT_EQ(number_in_picture(123456, "###.#"), "1e+05");
  EXPECT_EQ(number_in_picture(1e-9, "############.######"), "1e-09"); // not 0
  EXPECT_EQ(number_in_picture(1e300, "#######.###"), "1e+300");
  EXPECT_EQ(number_in_picture(1.0 / 3, "E"), "0.333333333333");
  EXPECT_EQ(number_in_picture(-1.0 / 3e10, "EEEEEEE.EEEEEEE"), "-3.33333333e-11");
  EXPECT_EQ(number_in_picture(250, "EEEEEEE.EEEEEEE"), "250");
  EXPECT_EQ(number_in_picture(2.5, ""), "2.5");
}

TEST(NumericPicture, ShowsNonFiniteValuesAsTexts) {
  using limits = std::numeric_limits<double>;
  EXPECT_EQ(number_in_picture(limits::quiet_NaN(), "###.#"), "NaN");
  EXPECT_EQ(number_in_picture(-limits::infinity(), "E"), "-Inf");
}

} // namespace
} // namespace vesk
