// The forcing over an interval between two events. Each value is linear in time there, so two samples give all of it.
//
// A day on or close to an end of the interval is never sampled: the front end keeps times in single precision, and a
// sample there may belong to the other side of a jump.
#ifndef REFERENCE_ENGINE_CORE_FORCING_LINE_H
#define REFERENCE_ENGINE_CORE_FORCING_LINE_H

#include "core/forcing.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace reference_engine {

// Some elements of one array of a Forcing, each on a line through two samples.
class SampledValues {
public:
  explicit SampledValues(std::vector<std::size_t> elements) : elements_(std::move(elements)), now_(elements_.size()) {}

  // value_of(element): its value at the first or the second sample.
  template <class ValueOf>
  void take_first(ValueOf value_of) {
    take(first_, value_of);
    second_ = first_;
    varies_ = false;
  }
  template <class ValueOf>
  void take_second(ValueOf value_of) {
    take(second_, value_of);
    varies_ = second_ != first_;
  }

  // share: 0 at the first sample, 1 at the second; may lie outside. slack: how far below 0, as a share of the larger
  // sample, a line between two samples above 0 is held at 0; the same for samples below 0. True when a value changed,
  // and at the first call, so that what follows from the values is worked out even where all are 0.
  bool move_to(double share, double slack);

  bool varies() const { return varies_; }
  std::span<const double> now() const { return now_; } // in the order of the elements

private:
  template <class ValueOf>
  void take(std::vector<double>& samples, ValueOf value_of) {
    samples.clear();
    for (const std::size_t element : elements_) samples.push_back(value_of(element));
    fresh_ = true;
  }

  std::vector<std::size_t> elements_;
  std::vector<double> first_, second_, now_;
  bool varies_ = false, fresh_ = false;
  bool known_ = false; // `now_` has been worked out at least once
};

// The elements of a Forcing that a model uses.
struct UsedElements {
  std::vector<std::size_t> flows, exchanges; // ascending
  std::vector<std::size_t> loads, boundaries;
  std::size_t time_functions = 0; // all up to this ISC number
};

class ForcingLine {
public:
  explicit ForcingLine(UsedElements used);

  // Two samples on different days of the interval, in order of time. straight: false where a value may not be linear
  // between them; it is then held at 0 where it would change its sign outside the samples.
  void take_first(const Forcing& forcing, double day);
  void take_second(const Forcing& forcing, double day, bool straight = true);
  // Values that do not change until the next sample.
  void hold(const Forcing& forcing) { take_first(forcing, 0); }

  struct Changes {
    bool water = false, sources = false, time_functions = false; // flows and exchanges; loads and boundaries
  };
  // Works out the values of a day. Returns which differ from those before.
  Changes move_to(double day);

  // Counts the samples: another number is another line.
  std::uint64_t version() const { return version_; }
  double day() const { return day_; } // of the values
  // The days on which the line begins and ends; twice the same for values that do not change.
  std::pair<double, double> ends() const {
    const double quarter = (second_day_ - first_day_) / 2; // the samples lie at a quarter and at three quarters
    return {first_day_ - quarter, second_day_ + quarter};
  }

  bool varies() const;
  bool water_varies() const { return flows_.varies() || exchanges_.varies(); }
  bool time_functions_vary() const { return time_functions_.varies(); }
  // Anything but loads and boundary concentrations varies.
  bool coefficients_vary() const { return water_varies() || time_functions_vary(); }
  // Flows and boundary concentrations both vary, so that what flows in is no longer linear in time.
  bool inflow_is_curved() const { return flows_.varies() && boundaries_.varies(); }

  // The values of that day, in the order of the used elements.
  std::span<const double> flows() const { return flows_.now(); }           // m3/s
  std::span<const double> exchanges() const { return exchanges_.now(); }   // m2/s
  std::span<const double> loads() const { return loads_.now(); }           // kg/day
  std::span<const double> boundaries() const { return boundaries_.now(); } // g/m3
  TimeFunctions time_functions() const { return TimeFunctions(time_functions_.now()); }
  const std::vector<double>& volume_change() const { return volume_change_; } // as Forcing has it

private:
  SampledValues flows_, exchanges_, loads_, boundaries_, time_functions_;
  std::vector<double> volume_change_;
  double first_day_ = 0, second_day_ = 0, day_ = 0;
  bool straight_ = true, fresh_ = true, volume_fresh_ = true;
  std::uint64_t version_ = 0;
};

} // namespace reference_engine

#endif
