#include "core/hydraulics.h"

#include <algorithm>
#include <cmath>

namespace reference_engine {

Hydraulics::Hydraulics(const Problem& problem) : depth_(problem.segments.size()), velocity_(problem.segments.size()) {}

// Hydraulic geometry: velocity and depth are powers of the flow (Leopold and Maddock, USGS Professional Paper 252,
// 1953). A segment without a multiplier gets them from its box: depth = volume / (length width), velocity = flow /
// (width depth).
void Hydraulics::update(const Problem& problem, std::span<const double> flow, std::span<const double> volume) {
  for (std::size_t i = 0; i < problem.segments.size(); ++i) {
    const Segment& segment = problem.segments[i];
    const double bottom_area = segment.length * segment.width;
    double depth = 0;
    if (segment.depth_multiplier > 0)
      depth = segment.depth_multiplier * std::pow(flow[i], segment.depth_exponent);
    else if (bottom_area > 0)
      depth = volume[i] / bottom_area;
    depth_[i] = std::max(depth, segment.minimum_depth);

    const double section = segment.width * depth_[i];
    double velocity = 0;
    if (segment.velocity_multiplier > 0)
      velocity = segment.velocity_multiplier * std::pow(flow[i], segment.velocity_exponent);
    else if (section > 0)
      velocity = flow[i] / section;
    velocity_[i] = velocity;
  }
  ++version_;
}

} // namespace reference_engine
