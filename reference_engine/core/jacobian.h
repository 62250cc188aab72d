// How the rates of change of masses depend on the masses, 1/day: within a segment by reactions, between segments by
// transport, which is that of a class of systems.
#ifndef REFERENCE_ENGINE_CORE_JACOBIAN_H
#define REFERENCE_ENGINE_CORE_JACOBIAN_H

#include "core/network.h"

#include <cstddef>
#include <vector>

namespace reference_engine {

// What does not change during a run. A system's place is its position among the simulated ones.
struct JacobianShape {
  std::size_t segments = 0;
  std::vector<std::size_t> class_of;    // by place
  bool reacts = false, couples = false; // couples: a reaction may depend on several systems
  std::vector<std::size_t> joined;      // segments that exchange something with the one numbered after them
  std::vector<FarTerm> far_terms;
  std::vector<std::size_t> boundary;
};

struct Jacobian {
  // Shares of a segment's mass that leave it.
  struct OfClass {
    std::vector<double> all, to_next, to_previous; // by segment
    std::vector<double> far;                       // by far term
    std::vector<double> boundary;                  // by boundary segment
    std::vector<double> sink;                      // by segment; empty for none
  };
  std::vector<OfClass> classes;
  std::vector<double> reactions; // [place of the cause][place of the effect][segment]; empty for none
};

} // namespace reference_engine

#endif
