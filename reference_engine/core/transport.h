// How systems are carried. Systems that are carried alike share one set of coefficients, so a step reads the network
// once for all of them. A coefficient, m3/day, times the concentration of the segment that gives is a flux, g/day.
#ifndef REFERENCE_ENGINE_CORE_TRANSPORT_H
#define REFERENCE_ENGINE_CORE_TRANSPORT_H

#include "core/network.h"
#include "core/problem.h"

#include <array>
#include <span>
#include <vector>

namespace reference_engine {

// The coefficients of a stretch of segments. Room for its own use is kept from stretch to stretch.
struct Coefficients {
  std::vector<double> out; // of each segment: all that leaves it, to its neighbours and elsewhere

  // For each segment: what comes from the one before it and from the one after it.
  const double* lower() const { return up.data(); }
  const double* upper() const { return down.data() + 1; }

  std::vector<double> up, down; // by link, from the one before the first segment on
};

class TransportClass {
public:
  TransportClass(const Problem& problem, const Network& network, std::size_t system, bool settles);

  // Whether the system is carried as this class's systems are, and may join them.
  bool serves(const Problem& problem, const Network& network, std::size_t system, bool settles) const;
  bool settles() const { return settles_; }
  void join(std::size_t system) { systems_.push_back(system); }
  std::span<const std::size_t> systems() const { return systems_; }

  // Takes the values of the network's links that are in no layer.
  void take_links(const Problem& problem, const Network& network);
  // Takes what settles out of each segment, m3/day; only where the class settles.
  void take_settling(const Problem& problem, const Network& network, std::vector<double> settling);

  // Of the network as it is now.
  void find_coefficients(const Problem& problem, const Network& network, const LayerValues& layers,
                         Coefficients& into) const;
  double far(std::size_t term) const { return far_[term] + (far_settling_.empty() ? 0 : far_settling_[term]); }
  // Over the rim, for each of its segments; what comes in is of the boundary concentration.
  std::span<const double> rim_in() const { return rim_in_; }
  std::span<const double> rim_out() const { return rim_out_; }
  // What settles out of the model from each segment; empty for none.
  std::span<const double> sink() const { return sink_; }

private:
  enum class Share { whole, dissolved, particulate, none };
  using Shares = std::array<Share, carriers>;

  static Shares shares(const Problem& problem, const Network& network, std::size_t system);
  static bool needs_dissolved(const Shares& shares);
  double share(const Problem& problem, Share share, std::size_t segment) const;
  const double* shares_of_links(Share share, std::size_t begin) const;
  void add_settling(const Problem& problem, std::size_t begin, std::size_t end, Coefficients& into) const;

  std::vector<std::size_t> systems_;
  Shares shares_{};
  bool settles_;
  // Of each segment, with one more on both sides; empty where no carrier asks for it.
  std::vector<double> dissolved_, particulate_;
  std::vector<double> far_, far_settling_, rim_in_, rim_out_;
  std::vector<double> leaving_; // of the network's linked segments, by such links
  std::vector<double> settling_, sink_;
};

} // namespace reference_engine

#endif
