// What a run solves, as plain numbers. Positions count from 0. Lengths in m, volumes in m3, concentrations in g/m3.
// Values over time are in a Forcing instead; each pair names the element that drives it.
#ifndef REFERENCE_ENGINE_CORE_PROBLEM_H
#define REFERENCE_ENGINE_CORE_PROBLEM_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace reference_engine {

constexpr int outside = -1; // a segment position: the world around the model
constexpr double seconds_per_day = 86400.0;
constexpr double grams_per_kilogram = 1000.0;

// Numbers that the catalogue uses too: never change.
enum SegmentType { surface = 1, subsurface = 2, surface_benthic = 3, subsurface_benthic = 4 };
constexpr bool is_bed(int type) {
  return type == surface_benthic || type == subsurface_benthic;
}

struct Segment {
  std::string name;
  double volume = 0;                                     // at the start, more than 0
  double velocity_multiplier = 0, velocity_exponent = 0; // velocity = multiplier * flow ^ exponent, m/s and m3/s
  double depth_multiplier = 0, depth_exponent = 0;       // depth = multiplier * flow ^ exponent
  double length = 0, width = 0, minimum_depth = 0;
  int type = surface;
  int bottom = outside; // segment beneath; what settles leaves the model where there is none
};

struct System {
  std::string name;
  bool simulated = true;            // false: keeps its initial concentrations
  bool flows = true;                // carried by flows
  bool disperses = true;            // carried by exchanges
  int solids_field = 0;             // 0 to 2: the solids field that carries its particulate share
  double largest_concentration = 0; // above it a run warns; 0 or less: no limit
  double boundary_factor = 1, load_factor = 1;
};

enum class FlowField { surface_water, pore_water, solids_1, solids_2, solids_3, evaporation };
enum class ExchangeField { surface_water, pore_water };

struct FlowPair {
  std::size_t element = 0; // that Forcing::flow takes, m3/s
  FlowField field = FlowField::surface_water;
  int from = outside, to = outside;
  double factor = 1; // share of the flow times scale and conversion
};

struct ExchangePair {
  std::size_t element = 0; // of Forcing::exchanges, m2/s
  ExchangeField field = ExchangeField::surface_water;
  int one = outside, two = outside;
  double factor = 1; // area / length times scale and conversion, m
};

struct Load {
  int system = 0, segment = 0; // driven by element segment * systems + system of Forcing::loads, kg/day
};

struct Problem {
  std::vector<Segment> segments;
  std::vector<System> systems;
  std::vector<FlowPair> flows;
  std::vector<ExchangePair> exchanges;
  std::vector<Load> loads;                       // each system and segment at most once
  std::vector<double> initial;                   // [system][segment]
  std::vector<double> dissolved;                 // [system][segment], share from 0 to 1
  std::map<int, std::vector<double>> parameters; // used ones by ISC number, one value a segment
  std::map<int, double> constants;               // used ones by ISC number
  std::set<int> time_functions;                  // used ones by ISC number
  bool net_flows = true;                         // flows between the same two segments are netted first
  bool negative_allowed = false;                 // else a concentration below 0 is set to 0
  int balance_system = -1;                       // whose mass balance is kept, -1 none

  std::size_t at(std::size_t system, std::size_t segment) const { return system * segments.size() + segment; }
};

} // namespace reference_engine

#endif
