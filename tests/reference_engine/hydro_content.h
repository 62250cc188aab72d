// The content of a hydrodynamic test file, and its writer. Start from a valid one and change what the test is about.
#ifndef TESTS_REFERENCE_ENGINE_HYDRO_CONTENT_H
#define TESTS_REFERENCE_ENGINE_HYDRO_CONTENT_H

#include <gtest/gtest.h>
#include <netcdf.h>

#include <map>
#include <string>
#include <vector>

struct HydroContent {
  // Two reaches and a pond. Day 0: 2 m3/s flow into the upper reach and 1 m3/s out of it, so that it doubles; day 1: 1
  // m3/s through both. The pond halves on day 1 without a link.
  std::map<std::string, std::vector<double>> values = {
      {"time", {240, 264, 288}},
      {"length", {1000, NC_FILL_DOUBLE, 10}},
      {"width", {20, 30, 10}},
      {"link_from", {0, 1, 2}},
      {"link_to", {1, 2, 0}},
      {"flow", {2, 1, 1, 1, 1, 1, 9, 9, 9}},
      {"volume", {86400, 86400, 100, 172800, 86400, 100, 172800, 86400, 50}},
  };
  std::map<std::string, std::vector<std::string>> shapes = {
      {"time", {"time"}},    {"length", {"segment"}},    {"width", {"segment"}},          {"link_from", {"link"}},
      {"link_to", {"link"}}, {"flow", {"time", "link"}}, {"volume", {"time", "segment"}},
  };
  std::string units = "hours since 2000-01-01 00:00";
  std::string without; // a dimension or variable to leave out
  int form = NC_NETCDF4;

  void write(const std::string& name) const {
    int id = 0, letters = 0, names = 0;
    std::map<std::string, int> dimensions, variables;
    ASSERT_EQ(nc_create(name.c_str(), NC_CLOBBER | form, &id), NC_NOERR);
    for (const auto& [dimension, size] : {std::pair("time", 3u), std::pair("segment", 3u), std::pair("link", 3u)})
      nc_def_dim(id, without == dimension ? "other" : dimension, size, &dimensions[dimension]);
    nc_def_dim(id, "name_length", 6, &letters);
    for (const auto& [variable, shape] : shapes) {
      std::vector<int> ids;
      for (const std::string& dimension : shape) ids.push_back(dimensions.at(dimension));
      if (without != variable)
        nc_def_var(id, variable.c_str(), NC_DOUBLE, static_cast<int>(ids.size()), ids.data(), &variables[variable]);
    }
    const int shape[] = {dimensions["segment"], letters};
    nc_def_var(id, "segment_name", NC_CHAR, 2, shape, &names);
    if (without != "time") nc_put_att_text(id, variables.at("time"), "units", units.size(), units.data());
    ASSERT_EQ(nc_enddef(id), NC_NOERR);
    nc_put_var_text(id, names, "upper\0lower pond  ");
    for (const auto& [variable, number] : variables) nc_put_var_double(id, number, values.at(variable).data());
    ASSERT_EQ(nc_close(id), NC_NOERR);
  }
};

#endif
