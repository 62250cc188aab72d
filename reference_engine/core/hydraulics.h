// Depth and velocity of each segment, from its flow.
#ifndef REFERENCE_ENGINE_CORE_HYDRAULICS_H
#define REFERENCE_ENGINE_CORE_HYDRAULICS_H

#include "core/problem.h"

#include <cstdint>
#include <span>
#include <vector>

namespace reference_engine {

class Hydraulics {
public:
  explicit Hydraulics(const Problem& problem);

  // flow: m3/s, 0 or more. volume: m3.
  void update(const Problem& problem, std::span<const double> flow, std::span<const double> volume);
  // Counts the updates.
  std::uint64_t version() const { return version_; }

  std::span<const double> depth() const { return depth_; }       // m; 0 where unknown
  std::span<const double> velocity() const { return velocity_; } // m/s; 0 where unknown

private:
  std::vector<double> depth_, velocity_;
  std::uint64_t version_ = 0;
};

} // namespace reference_engine

#endif
