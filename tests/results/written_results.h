// A file of results that a test writes. Start from a good one and change what the test is about.
#pragma once

#include <gtest/gtest.h>
#include <netcdf.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vesk {

// Times 0, 1, 2 and so on in days since 2000-01-01, segments s1, s2 and so on; the value is 10 * time + segment.
struct written_results {
  int format = NC_64BIT_OFFSET;
  std::size_t times = 3, segments = 4;
  std::string time_name = "time", segment_name = "segment", variable = "DO";
  std::string units = "days since 2000-01-01", calendar = "standard";
  bool segments_first = false;
  std::size_t chunk_times = 0, chunk_segments = 0; // 0: not chunked
  nc_type type = NC_FLOAT;
  std::function<void(int file, int variable)> define = [](int, int) {}; // more of it, while it is defined
  std::vector<double> values = {};                                      // in the order of the file; empty: as above
  bool is_filled = true;                                                // false: dimensions and variables alone

  void write(const std::string& name) const {
    int id = 0, dimensions[3], time = 0, data = 0, names = 0;
    ASSERT_EQ(nc_create(name.c_str(), NC_CLOBBER | format, &id), NC_NOERR);
    const bool can_be_turned = format == NC_NETCDF4;
    nc_def_dim(id, time_name.c_str(), can_be_turned ? times : NC_UNLIMITED, &dimensions[0]);
    nc_def_dim(id, segment_name.c_str(), segments, &dimensions[1]);
    nc_def_dim(id, "letters", 4, &dimensions[2]);
    nc_def_var(id, time_name.c_str(), NC_DOUBLE, 1, dimensions, &time);
    nc_put_att_text(id, time, "units", units.size(), units.data());
    nc_put_att_text(id, time, "calendar", calendar.size(), calendar.data());
    nc_def_var(id, (segment_name + "_name").c_str(), NC_CHAR, 2, dimensions + 1, &names);
    const int turned[] = {dimensions[1], dimensions[0]};
    nc_def_var(id, variable.c_str(), type, 2, segments_first ? turned : dimensions, &data);
    nc_put_att_text(id, data, "units", 4, "g/m3");
    if (chunk_times > 0) {
      const std::size_t usual[] = {chunk_times, chunk_segments}, other[] = {chunk_segments, chunk_times};
      nc_def_var_chunking(id, data, NC_CHUNKED, segments_first ? other : usual);
      nc_def_var_deflate(id, data, 1, 1, 1);
    }
    define(id, data);
    nc_enddef(id);
    if (is_filled) fill(id, time, names, data);
    ASSERT_EQ(nc_close(id), NC_NOERR);
  }

private:
  void fill(int id, int time, int names, int data) const {
    std::vector<double> moments, all = values;
    std::string letters;
    for (std::size_t t = 0; t < times; ++t) moments.push_back(static_cast<double>(t));
    for (std::size_t s = 0; s < segments; ++s) {
      std::string segment = "s" + std::to_string(s + 1);
      segment.resize(4);
      letters += segment;
    }
    if (all.empty()) all = plain_values();
    const std::size_t start[] = {0, 0}, count[] = {times, segments}, turned_count[] = {segments, times};
    nc_put_vara_double(id, time, start, count, moments.data());
    nc_put_var_text(id, names, letters.data());
    if (!all.empty()) nc_put_vara_double(id, data, start, segments_first ? turned_count : count, all.data());
  }

  std::vector<double> plain_values() const {
    std::vector<double> all(times * segments);
    for (std::size_t t = 0; t < times; ++t)
      for (std::size_t s = 0; s < segments; ++s)
        all[segments_first ? s * times + t : t * segments + s] = 10.0 * static_cast<double>(t) + static_cast<double>(s);
    return all;
  }
};

} // namespace vesk
