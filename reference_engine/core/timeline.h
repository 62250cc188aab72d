// The events of a run: print times, points of series, changes of a hydrodynamic file. A step ends at each, and between
// two of them every value over time is linear. Days since the start of the run throughout.
#ifndef REFERENCE_ENGINE_CORE_TIMELINE_H
#define REFERENCE_ENGINE_CORE_TIMELINE_H

#include <cstddef>
#include <utility>
#include <vector>

namespace reference_engine {

// A tenth of a millisecond. Days no farther apart count as one, and no step is shorter.
constexpr double same_moment = 1e-9;

// The front end keeps dates and times to the second: a day as it was before single precision rounded it.
double to_second(double day);

// The whole multiples of each print interval, counted from the day on which it begins to hold.
class PrintTimes {
public:
  // rules: day and interval from then on, ascending; the first holds from the start. An interval of a second or more is
  // taken to the nearest second.
  explicit PrintTimes(const std::vector<std::pair<double, double>>& rules);

  double next(double day) const; // the first one later than this day

private:
  struct Rule {
    double from, interval; // s
  };
  std::vector<Rule> rules_; // each with another interval than the one before it
};

class Timeline {
public:
  // points: days of the points of all series in use, ascending. apart: a point closer than this to another event
  // counts with it; so does one closer than single precision can resolve.
  Timeline(double end, PrintTimes prints, std::vector<double> points, double apart);

  struct Event {
    double day = 0;
    bool prints = false;  // results are due
    bool straight = true; // no point counts with another event that does not lie on it
  };
  // The first event after `day`, which is the start or an event. next_change: of a hydrodynamic file.
  Event next(double day, double next_change);

  // Points so far that count with another event.
  std::size_t merged() const { return merged_; }

private:
  double apart(double day) const;
  static bool on(double point, double event);

  double end_;
  PrintTimes prints_;
  std::vector<double> points_;
  double apart_;
  std::size_t ahead_ = 0; // the first point that has not been passed
  std::size_t merged_ = 0;
};

} // namespace reference_engine

#endif
