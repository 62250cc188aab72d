#include "core/timeline.h"

#include "core/problem.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace reference_engine {

namespace {

// Distance of neighbouring numbers in the interface's single precision.
double spacing(double day) {
  const auto narrow = static_cast<float>(std::abs(day));
  return static_cast<double>(std::nextafter(narrow, std::numeric_limits<float>::infinity()) - narrow);
}

} // namespace

double to_second(double day) {
  return std::round(day * seconds_per_day) / seconds_per_day;
}

PrintTimes::PrintTimes(const std::vector<std::pair<double, double>>& rules) {
  for (const auto& [day, days] : rules) {
    const double given = days * seconds_per_day;
    const double interval = given >= 1 ? std::round(given) : given;
    if (!rules_.empty() && rules_.back().interval == interval) continue;
    const double from = rules_.empty() ? 0 : std::max(0.0, std::round(day * seconds_per_day));
    if (!rules_.empty() && rules_.back().from == from) rules_.pop_back(); // both hold from the start
    rules_.push_back({from, interval});
  }
}

double PrintTimes::next(double day) const {
  const double now = (day + same_moment) * seconds_per_day;
  const auto later = [&](const Rule& rule) { return rule.from > now; };
  const auto change = std::find_if(rules_.begin(), rules_.end(), later);
  const Rule& rule = change == rules_.begin() ? rules_.front() : *std::prev(change);
  const double multiple = std::floor((now - rule.from) / rule.interval) + 1;
  double next = rule.from + multiple * rule.interval;
  if (change != rules_.end()) next = std::min(next, change->from);
  return next / seconds_per_day;
}

Timeline::Timeline(double end, PrintTimes prints, std::vector<double> points, double apart)
    : end_(end), prints_(std::move(prints)), points_(std::move(points)), apart_(apart) {}

// Two samples must fit between two events, at a quarter and at three quarters, and neither may be rounded to the wrong
// side of an end.
double Timeline::apart(double day) const {
  return std::max(apart_, 8 * spacing(day));
}

bool Timeline::on(double point, double event) {
  return std::abs(point - event) <= std::max(spacing(event), same_moment);
}

Timeline::Event Timeline::next(double day, double next_change) {
  Event event;
  const auto pass = [&](double point, double other) { event.straight = event.straight && on(point, other); };
  for (; ahead_ < points_.size() && points_[ahead_] < day + apart(day); ++ahead_) {
    if (points_[ahead_] > day) pass(points_[ahead_], day);
    if (!on(points_[ahead_], day)) ++merged_;
  }
  const double print = prints_.next(day), fixed = std::min({print, next_change, end_});
  event.day = fixed;
  std::size_t at = ahead_;
  if (at < points_.size() && points_[at] <= fixed - apart(fixed)) event.day = points_[at++];
  // Points that the event at the end of this interval takes in.
  if (event.day == fixed)
    for (; at < points_.size() && points_[at] < fixed; ++at) pass(points_[at], fixed);
  event.prints = event.day >= std::min(print, end_) - same_moment;
  return event;
}

} // namespace reference_engine
