// The contents of a file over time and segments, read with the NetCDF library.
#pragma once

#include "results/nc_helper/protocol.h"
#include "results/nc_helper/variable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vesk::nc {

class content {
public:
  // All functions throw refusal.
  explicit content(const char* name);

  // In the protocol's format.
  std::string packed() const;

  std::vector<double> answer_to(const question& asked) const;

private:
  struct description { // of a variable of the file
    int id = 0;
    std::string name;
    bool is_number = false, is_text = false; // neither: a user-defined type
    std::vector<int> shape;                  // dimension ids
  };

  std::vector<description> all_variables() const;
  bool counts_time(const description& it) const;
  void find_time();
  void find_segments();
  void find_variables();
  std::string dimension_name(int dimension) const;
  std::string text(int variable, const char* name) const;
  std::vector<double> numbers(int variable, std::uint64_t size) const;
  std::vector<double> lengths() const;
  std::vector<std::string> names() const;
  std::vector<std::string> letters(const description& it) const;
  std::vector<std::string> strings(const description& it) const;
  int rank_as_names(const description& it) const;

  int file_ = -1;
  std::vector<description> variables_;
  int time_ = -1, time_dimension_ = -1, segment_dimension_ = -1;
  std::uint64_t times_ = 0, segments_ = 0;
  std::vector<variable> shown_;
};

} // namespace vesk::nc
