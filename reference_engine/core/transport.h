// How systems are carried. Systems that are carried alike share one set of coefficients, so a step reads the network
// once for all of them.
#ifndef REFERENCE_ENGINE_CORE_TRANSPORT_H
#define REFERENCE_ENGINE_CORE_TRANSPORT_H

#include "core/network.h"
#include "core/problem.h"

#include <array>
#include <span>
#include <vector>

namespace reference_engine {

class TransportClass {
public:
  TransportClass(const Problem& problem, std::size_t system, bool settles);

  // Whether the system is carried as this class's systems are, and may join them.
  bool serves(const Problem& problem, std::size_t system, bool settles) const;
  bool settles() const { return settles_; }
  void join(std::size_t system) { systems_.push_back(system); }

  // Works out what comes over the rim.
  void update_rim(const Problem& problem, const Network& network);
  // m3/day for each segment of the rim, of the boundary concentration.
  std::span<const double> rim_in() const { return rim_in_; }
  // Works all other coefficients out. `settling`: m3/day that settle out of each segment; empty for none.
  void update(const Problem& problem, const Network& network, std::span<const double> settling);

  std::span<const std::size_t> systems() const { return systems_; }
  // By the network's CoefficientLayout, m3/day.
  std::span<const double> coefficients() const { return coefficients_; }
  // What settles out of the model from each segment, m3/day; empty for none. It is part of `out`.
  std::span<const double> sink() const { return sink_; }

private:
  enum class Share { whole, dissolved, particulate, none };

  std::array<Share, carriers> shares(const Problem& problem, std::size_t system) const;
  double share(const Problem& problem, Share share, std::size_t segment) const;

  std::vector<std::size_t> systems_;
  std::array<Share, carriers> shares_{};
  bool settles_;
  std::vector<double> coefficients_, rim_in_, sink_;
};

} // namespace reference_engine

#endif
