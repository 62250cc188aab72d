// One variable over time and segments: how it is stored in the file, and its values as numbers.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace vesk::nc {

class variable {
public:
  // The variable `id`, which has two dimensions and numbers, in the order (time, segment) or the other one. All
  // functions throw refusal.
  variable(int file, int id, bool segments_first, std::uint64_t times, std::uint64_t segments);

  int id() const { return id_; }

  // Row after row of times; not-a-number where there is no value.
  std::vector<double> values(std::uint64_t first_time, std::uint64_t times, std::uint64_t first_segment,
                             std::uint64_t segments) const;

  // For each segment over these times: the least, then the mean, the greatest, and the number of values.
  std::vector<double> bands(std::uint64_t first_time, std::uint64_t times) const;

private:
  template <class Number>
  std::vector<Number> read(std::uint64_t first_time, std::uint64_t times, std::uint64_t first_segment,
                           std::uint64_t segments) const;
  template <class Number>
  std::vector<double> bands_of(std::uint64_t first_time, std::uint64_t times) const;
  template <class Number>
  void mask(std::span<Number> values) const;
  void use_chunks();
  void read_meaning();
  double default_fill() const;

  int file_, id_, type_ = 0;
  bool segments_first_;
  std::uint64_t times_, segments_;
  std::uint64_t times_at_once_; // that are read together when all segments are
  std::vector<double> fills_;   // stored values that say that there is none
  double least_ = -std::numeric_limits<double>::infinity(), greatest_ = std::numeric_limits<double>::infinity();
  double scale_ = 1, offset_ = 0;
};

} // namespace vesk::nc
