// Files of results: the engine's form, other people's forms, and bad ones.
#include "platform/file_io.h"
#include "query/cancellation.h"
#include "results/results_file.h"
#include "temporary_folder.h"
#include "written_results.h"

#include <gmock/gmock.h>
#include <hdf5.h>

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace vesk {
namespace {

using testing::DoubleEq;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsNan;
using testing::StartsWith;

class ResultsFile : public testing::Test {
protected:
  results_file open(const written_results& content) const {
    content.write(file);
    return results_file(file);
  }
  // The sentence without the file's name.
  template <class Action>
  std::string refusal(const Action& action) const {
    try {
      action();
    } catch (const std::exception& error) {
      const std::string sentence = error.what();
      return sentence.starts_with(file + ": ") ? sentence.substr(file.size() + 2) : sentence;
    }
    return "";
  }
  std::string refused(const written_results& content) const {
    content.write(file);
    return refusal([&] { results_file opened(file); });
  }

  temporary_folder folder;
  std::string file = folder.file("river.nc");
};

TEST_F(ResultsFile, SeriesProfilesSlicesAndBandsAreRead) {
  const results_file results = open({});
  EXPECT_EQ(results.segments(), 4u);
  EXPECT_THAT(results.times(), ElementsAre(36526, 36527, 36528));
  EXPECT_EQ(results.segment_name(3), "s4");
  EXPECT_TRUE(results.lengths().empty());
  ASSERT_EQ(results.variables().size(), 1u);
  EXPECT_EQ(results.variables()[0].units, "g/m3");
  EXPECT_THAT(results.series(0, 2), ElementsAre(2, 12, 22));
  EXPECT_THAT(results.profile(0, 1), ElementsAre(10, 11, 12, 13));
  EXPECT_THAT(results.slice(0, {1, 2}, {2, 2}), ElementsAre(12, 13, 22, 23));
  const results_bands bands = results.bands(0, {1, 2});
  EXPECT_THAT(bands.least, ElementsAre(10, 11, 12, 13));
  EXPECT_THAT(bands.mean, ElementsAre(15, 16, 17, 18));
  EXPECT_THAT(bands.greatest, ElementsAre(20, 21, 22, 23));
  EXPECT_THAT(bands.counts, ElementsAre(2, 2, 2, 2));
}

TEST_F(ResultsFile, BandsAreThoseOfTheSeries) {
  for (const nc_type type : {NC_FLOAT, NC_DOUBLE}) {
    written_results content{.times = 700, .segments = 2500, .type = type}; // more than is read at once
    for (std::size_t i = 0; i < content.times * content.segments; ++i)
      content.values.push_back(i % 11 == 0 ? NC_FILL_FLOAT : static_cast<double>(i * 37 % 1009));
    const results_file results = open(content);
    const results_bands bands = results.bands(0, {1, 698});
    for (const std::size_t segment : {0, 1023, 1024, 2047, 2048, 2499}) {
      double least = INFINITY, greatest = -INFINITY, sum = 0;
      std::uint64_t count = 0;
      for (const double value : results.slice(0, {1, 698}, {segment, 1}))
        if (value == value) least = std::min(least, value), greatest = std::max(greatest, value), sum += value, ++count;
      EXPECT_EQ(bands.counts[segment], count);
      EXPECT_EQ(bands.least[segment], least);
      EXPECT_EQ(bands.greatest[segment], greatest);
      EXPECT_DOUBLE_EQ(bands.mean[segment], sum / static_cast<double>(count));
    }
  }
}

TEST_F(ResultsFile, NamesLeadToVariablesAndSegments) {
  const results_file results = open({.define = [](int id, int data) {
    nc_put_att_text(id, data, "long_name", 17, "Gel\u00f6ster oxygen");
    int other = 0, shape[] = {0, 1};
    nc_def_var(id, "BOD", NC_FLOAT, 2, shape, &other);
  }});
  EXPECT_EQ(results.find_variable("BOD"), 1u);
  EXPECT_EQ(results.find_variable("GEL\u00d6STER Oxygen"), 0u);
  EXPECT_EQ(refusal([&] { results.find_variable("BOT"); }), "has no variable \"BOT\"; the nearest is \"BOD\".");
  EXPECT_EQ(results.find_segment("s3"), 2u);
  EXPECT_EQ(results.find_segment("4"), 3u);
  EXPECT_EQ(refusal([&] { results.find_segment("5"); }), "has the segments 1 to 4, and none with the number 5.");
  EXPECT_EQ(refusal([&] { results.find_segment("s33"); }), "has no segment \"s33\"; the nearest is \"s3\".");
}

TEST_F(ResultsFile, OtherLayoutsGiveTheSameValues) {
  const written_results chunked{.format = NC_NETCDF4, .chunk_times = 2, .chunk_segments = 3};
  written_results turned = chunked, doubles = chunked, station = chunked;
  turned.segments_first = true;
  doubles.type = NC_DOUBLE, doubles.chunk_times = 0;
  station.time_name = "t", station.segment_name = "station";
  for (const written_results& content : {chunked, turned, doubles, station, written_results{.format = NC_CLASSIC_MODEL},
                                         written_results{.format = NC_64BIT_DATA}, written_results{.type = NC_INT}}) {
    const results_file results = open(content);
    EXPECT_THAT(results.series(0, 3), ElementsAre(3, 13, 23));
    EXPECT_THAT(results.profile(0, 2), ElementsAre(20, 21, 22, 23));
    EXPECT_THAT(results.slice(0, {0, 2}, {1, 2}), ElementsAre(1, 2, 11, 12));
    EXPECT_THAT(results.bands(0, {0, 3}).mean, ElementsAre(10, 11, 12, 13));
    EXPECT_EQ(results.segment_name(1), "s2");
  }
}

TEST_F(ResultsFile, MissingAndPackedValuesAreUnderstood) {
  written_results content{.segments = 4, .values = {1, -9, NAN, 9.969209968386869e36, INFINITY, 2, 3, 99, 4, 5, 6, 7}};
  content.define = [](int id, int data) {
    const float fill = -9, scale = 0.5, offset = 100, greatest = 50;
    nc_put_att_float(id, data, "_FillValue", NC_FLOAT, 1, &fill);
    nc_put_att_float(id, data, "scale_factor", NC_FLOAT, 1, &scale);
    nc_put_att_float(id, data, "add_offset", NC_FLOAT, 1, &offset);
    nc_put_att_float(id, data, "valid_max", NC_FLOAT, 1, &greatest);
  };
  const results_file results = open(content);
  EXPECT_THAT(results.profile(0, 0), ElementsAre(100.5, IsNan(), IsNan(), IsNan()));
  EXPECT_THAT(results.profile(0, 1), ElementsAre(IsNan(), 101, 101.5, IsNan()));
  const results_bands bands = results.bands(0, {0, 2});
  EXPECT_THAT(bands.counts, ElementsAre(1, 1, 1, 0));
  EXPECT_THAT(bands.mean, ElementsAre(100.5, 101, 101.5, IsNan()));
  EXPECT_THAT(bands.least, ElementsAre(100.5, 101, 101.5, IsNan()));
  // Without an attribute the library's own fill value stands for nothing.
  EXPECT_THAT(open({.values = {NC_FILL_FLOAT, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}}).series(0, 0),
              ElementsAre(IsNan(), 4, 8));
}

TEST_F(ResultsFile, WhatIsNoResultsFileIsRefused) {
  const auto refused_file = [&](const std::string& name) { return refusal([&] { results_file opened(name); }); };
  folder.write("river.nc", "time,segment\n1,2\n");
  EXPECT_EQ(refused_file(file), "is not a NetCDF file.");
  folder.write("river.nc", "");
  EXPECT_EQ(refused_file(file), "is not a NetCDF file.");
  EXPECT_THAT(refused_file(folder.file("none.nc")), HasSubstr("No such file"));
  EXPECT_EQ(refused_file("https://example.org/river.nc"),
            "https://example.org/river.nc: is a URL; a results file must be on this machine.");
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  const file_descriptor writer(::open(folder.file("pipe").c_str(), O_RDWR));
  EXPECT_THAT(refused_file(folder.file("pipe")), EndsWith("is not a regular file."));

  EXPECT_EQ(refused({.times = 0}), "has no times: its dimension \"time\" is empty.");
  EXPECT_EQ(refused({.time_name = "step", .units = "1"}),
            "has no times: no variable has a unit such as \"days since 2000-01-01 00:00:00\".");
  EXPECT_EQ(refused({.units = "months since 2000-01-01"}),
            "counts its times in months, which differ in length; convert them to days, hours or seconds.");
  EXPECT_THAT(refused({.calendar = "360_day"}), StartsWith("has times of the calendar \"360_day\", whose "));
  written_results flat;
  flat.type = NC_CHAR, flat.values = {};
  EXPECT_THAT(refused(flat), StartsWith("has no variable over time and segments. "));
  EXPECT_EQ(
      refused(
          {.format = NC_NETCDF4, .segments = 20'000'000, .chunk_times = 1, .chunk_segments = 1000, .is_filled = false}),
      "has 20000000 segments; at most 10000000 can be shown.");
}

// The library reads zeros beyond the end, which would look like results.
TEST_F(ResultsFile, ACutFileIsRefusedAtEveryLength) {
  for (const int format : {int{NC_64BIT_OFFSET}, int{NC_64BIT_DATA}, int{NC_NETCDF4}}) {
    written_results{.format = format}.write(file);
    const std::string whole = folder.read("river.nc");
    const std::size_t step = format == NC_NETCDF4 ? 997 : 7; // a helper each
    for (std::size_t size = 0; size < whole.size(); size += step) {
      folder.write("river.nc", whole.substr(0, size));
      EXPECT_NE(refusal([&] { results_file opened(file); }), "") << format << " " << size;
    }
  }
  written_results{}.write(file);
  const std::string whole = folder.read("river.nc");
  folder.write("river.nc", whole.substr(0, whole.size() - 1));
  EXPECT_EQ(refusal([&] { results_file opened(file); }), "is cut: it has " + std::to_string(whole.size() - 1) +
                                                             " of at least " + std::to_string(whole.size()) +
                                                             " bytes.");
}

TEST_F(ResultsFile, DataOfOtherFilesAreNotRead) {
  written_results{.format = NC_NETCDF4}.write(file);
  const hid_t id = H5Fopen(file.c_str(), H5F_ACC_RDWR, H5P_DEFAULT);
  H5Lcreate_external("/etc/passwd", "/x", id, "elsewhere", H5P_DEFAULT, H5P_DEFAULT);
  H5Fclose(id);
  EXPECT_EQ(refusal([&] { results_file opened(file); }),
            "takes data from another file, which is not read: \"elsewhere\" is an external link; put all data into the "
            "one file.");
}

TEST_F(ResultsFile, OneThatIsDeletedOrReplacedStaysReadable) {
  const results_file results = open({});
  EXPECT_TRUE(results.is_current());
  std::filesystem::remove(file);
  EXPECT_FALSE(results.is_current());
  EXPECT_THAT(results.series(0, 0), ElementsAre(0, 10, 20));
  written_results{.times = 2}.write(file);
  EXPECT_FALSE(results.is_current());
  EXPECT_THAT(results.series(0, 1), ElementsAre(1, 11, 21));
}

TEST_F(ResultsFile, OneThatIsWrittenToIsNotMixedWithItsOldValues) {
  const results_file results = open({});
  const auto later = std::filesystem::last_write_time(file) + std::chrono::seconds(1);
  std::ofstream(file, std::ios::in | std::ios::out | std::ios::binary).seekp(-4, std::ios::end) << "xxxx";
  std::filesystem::last_write_time(file, later);
  EXPECT_EQ(refusal([&] { results.series(0, 3); }), "has changed since it was opened; open it again.");
  EXPECT_FALSE(results.is_current());
}

TEST_F(ResultsFile, QuestionsBeyondTheFileAreRefusedAndItServesOn) {
  const results_file results = open({});
  EXPECT_EQ(refusal([&] { results.profile(0, 3); }), "was asked for values that it does not have.");
  EXPECT_EQ(refusal([&] { results.series(1, 0); }), "was asked for values that it does not have.");
  EXPECT_EQ(refusal([&] { results.slice(0, {1, SIZE_MAX}, {0, 1}); }), "was asked for values that it does not have.");
  EXPECT_THAT(results.series(0, 0), ElementsAre(0, 10, 20));
}

// A cancelled question leaves no answer behind that the next one could take for its own.
TEST_F(ResultsFile, ItServesOnAfterACancel) {
  const results_file results =
      open({.format = NC_NETCDF4, .times = 2000, .segments = 5000, .chunk_times = 2000, .chunk_segments = 1});
  {
    const cancellation_scope scope([] { return true; });
    try {
      results.bands(0, {0, 2000}); // takes longer than a tenth of a second, or is simply answered
    } catch (const query_cancelled&) {
    }
  }
  EXPECT_EQ(results.profile(0, 1)[7], 17);
}

} // namespace
} // namespace vesk
