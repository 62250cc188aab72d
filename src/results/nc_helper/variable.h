// One variable over time and segments: its storage, and its values as numbers.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace vesk::nc {

class variable {
public:
  // The variable `id`, numeric and with two dimensions: (time, segment) or (segment, time). All functions throw
  // refusal.
  variable(int file, int id, bool segments_first, std::uint64_t times, std::uint64_t segments);

  int id() const { return id_; }

  // Time by time; not-a-number where there is no value.
  std::vector<double> values(std::uint64_t first_time, std::uint64_t times, std::uint64_t first_segment,
                             std::uint64_t segments) const;

  // For each segment over these times: minimum, then mean, maximum, and the number of values.
  std::vector<double> bands(std::uint64_t first_time, std::uint64_t times) const;

private:
  template <class Number>
  void read_stored(std::uint64_t first_time, std::uint64_t times, std::uint64_t first_segment, std::uint64_t segments,
                   std::vector<Number>& values) const;
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
  std::uint64_t times_at_once_; // read together for all segments
  std::vector<double> fills_;   // stored values that mean "no value"
  double least_ = -std::numeric_limits<double>::infinity(), greatest_ = std::numeric_limits<double>::infinity();
  double scale_ = 1, offset_ = 0;
};

} // namespace vesk::nc
