// The NetCDF file, read back by the NetCDF library.
#include "output/netcdf_header.h"
#include "output/results.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <netcdf.h>

namespace reference_engine {
namespace {

TEST(NetCdfResults, AreReadByTheLibraryAsTheyWereGiven) {
  const vesk::temporary_folder folder;
  const std::string long_name(250, 'a');
  const std::vector<OutputVariable> variables = {{3, long_name, "", "m3", ""}, {4, long_name, "", "1", ""}};
  RunDescription run{.title = "", .source = "abc", .start = {}, .segments = {"one", "", "three"}, .lengths = {5, 0, 7}};
  run.segments.resize(2000, "x"); // records of 16 kB, many pieces of the file
  run.lengths.resize(2000, 1);
  constexpr int times = 50, notes = 20;
  const auto writer = make_netcdf_writer(folder.path / "river", run, variables);
  std::vector<double> values(2000, 1e300); // an infinity as float
  for (int t = 0; t < times; ++t) {
    writer->begin_time(t);
    values[1] = std::nan("");
    for (const int variable : {0, 1}) {
      values[2] = 10 * t + variable;
      writer->write(static_cast<std::size_t>(variable), values);
    }
  }
  // As many as fit; then the data would have to move.
  for (int i = 0; i < notes; ++i) writer->annotate("note_" + std::to_string(i), std::string(5001, 'n'));
  writer->annotate("last", "short");
  writer->publish();

  int id = 0, count = 0, formats = 0, variable = 0;
  ASSERT_EQ(nc_open(folder.file("river.nc").c_str(), NC_NOWRITE, &id), NC_NOERR);
  nc_inq_format(id, &formats);
  EXPECT_EQ(formats, NC_FORMAT_64BIT_OFFSET);
  nc_inq_natts(id, &count);
  EXPECT_EQ(count, 4 + 13 + 1);
  std::size_t length = 0;
  nc_inq_attlen(id, NC_GLOBAL, "note_12", &length);
  EXPECT_EQ(length, 5001U);
  nc_inq_attlen(id, NC_GLOBAL, "title", &length);
  EXPECT_EQ(length, 0U);
  ASSERT_EQ(nc_inq_varid(id, (long_name.substr(0, 200) + "_4").c_str(), &variable), NC_NOERR);
  for (std::size_t t = 0; t < times; ++t) {
    float read[4] = {};
    const std::size_t start[] = {t, 0}, size[] = {1, 4};
    ASSERT_EQ(nc_get_vara_float(id, variable, start, size, read), NC_NOERR);
    EXPECT_EQ(read[0], std::numeric_limits<float>::infinity());
    EXPECT_EQ(read[1], NC_FILL_FLOAT);
    EXPECT_EQ(read[2], 10 * t + 1);
  }
  char names[3 * 5] = {};
  const std::size_t start[] = {0, 0}, size[] = {3, 5};
  nc_inq_varid(id, "segment_name", &variable);
  nc_get_vara_text(id, variable, start, size, names);
  EXPECT_EQ(std::string(names, sizeof names), std::string("one\0\0\0\0\0\0\0three", 15));
  double lengths[2000] = {};
  nc_inq_varid(id, "length", &variable);
  nc_get_var_double(id, variable, lengths);
  EXPECT_EQ(lengths[1], NC_FILL_DOUBLE);
  EXPECT_EQ(lengths[2], 7);
  nc_close(id);
}

TEST(NetCdfResults, ASliceHasAtMostFourGigabytes) {
  for (const bool fits : {true, false}) {
    NetCdfHeader header;
    const auto times = header.add_growing_dimension("time");
    const auto segments = header.add_dimension("segment", (std::size_t{1} << 30) - (fits ? 1 : 0));
    header.add_variable("flow", NetCdfHeader::Type::single, {times, segments});
    EXPECT_EQ(header.lay_out(0), fits);
  }
}

} // namespace
} // namespace reference_engine
