#include "core/forcing_line.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace reference_engine {

namespace {

std::vector<std::size_t> first_numbers(std::size_t count) {
  std::vector<std::size_t> numbers(count);
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  return numbers;
}

// The value of a line through a and b; 0 where it is on the other side of 0 from both, within the slack.
double on_line(double a, double b, double share, double slack) {
  const double value = a + (b - a) * share;
  if (a >= 0 && b >= 0) return value < 0 && -value <= slack * std::max(a, b) ? 0 : value;
  if (a <= 0 && b <= 0) return value > 0 && value <= slack * std::max(-a, -b) ? 0 : value;
  return value;
}

} // namespace

bool SampledValues::move_to(double share, double slack) {
  if (!varies_ && !fresh_) return false;
  fresh_ = false;
  bool changed = !std::exchange(known_, true);
  for (std::size_t k = 0; k < now_.size(); ++k) {
    const double value = on_line(first_[k], second_[k], share, slack);
    changed = changed || value != now_[k];
    now_[k] = value;
  }
  return changed;
}

ForcingLine::ForcingLine(UsedElements used)
    : flows_(std::move(used.flows)), exchanges_(std::move(used.exchanges)), loads_(std::move(used.loads)),
      boundaries_(std::move(used.boundaries)), time_functions_(first_numbers(used.time_functions)) {}

void ForcingLine::take_first(const Forcing& forcing, double day) {
  ++version_;
  first_day_ = second_day_ = day;
  straight_ = true;
  fresh_ = true;
  flows_.take_first([&](std::size_t element) { return forcing.flow(element); });
  const auto of = [](const std::vector<float>& all) {
    return [&all](std::size_t element) { return static_cast<double>(all[element]); };
  };
  exchanges_.take_first(of(forcing.exchanges));
  loads_.take_first(of(forcing.loads));
  boundaries_.take_first(of(forcing.boundaries));
  time_functions_.take_first(of(forcing.time_functions));
  volume_fresh_ = volume_change_ != forcing.volume_change;
  if (volume_fresh_) volume_change_ = forcing.volume_change;
}

void ForcingLine::take_second(const Forcing& forcing, double day, bool straight) {
  if (!(day > first_day_)) return; // too short an interval for two samples: the first one holds
  ++version_;
  second_day_ = day;
  straight_ = straight;
  flows_.take_second([&](std::size_t element) { return forcing.flow(element); });
  const auto of = [](const std::vector<float>& all) {
    return [&all](std::size_t element) { return static_cast<double>(all[element]); };
  };
  exchanges_.take_second(of(forcing.exchanges));
  loads_.take_second(of(forcing.loads));
  boundaries_.take_second(of(forcing.boundaries));
  time_functions_.take_second(of(forcing.time_functions));
}

bool ForcingLine::varies() const {
  return flows_.varies() || exchanges_.varies() || loads_.varies() || boundaries_.varies() || time_functions_.varies();
}

ForcingLine::Changes ForcingLine::move_to(double day) {
  if (!fresh_ && (day == day_ || !varies())) return {};
  fresh_ = false;
  day_ = day;
  // On a straight line only the samples' single precision can lead to the wrong side of 0.
  const double slack = straight_ ? 4e-7 : std::numeric_limits<double>::infinity();
  const double share = second_day_ > first_day_ ? (day - first_day_) / (second_day_ - first_day_) : 0.0;
  const bool flows = flows_.move_to(share, slack), exchanges = exchanges_.move_to(share, slack);
  const bool loads = loads_.move_to(share, slack), boundaries = boundaries_.move_to(share, slack);
  const bool functions = time_functions_.move_to(share, slack);
  return {.water = std::exchange(volume_fresh_, false) || flows || exchanges,
          .sources = loads || boundaries,
          .time_functions = functions};
}

} // namespace reference_engine
