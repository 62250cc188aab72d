// How systems are carried. Systems that are carried alike share one set of coefficients, so a step reads the network
// once for all of them. A coefficient, m3/day, times the concentration of the segment that gives is a flux, g/day.
#ifndef REFERENCE_ENGINE_CORE_TRANSPORT_H
#define REFERENCE_ENGINE_CORE_TRANSPORT_H

#include "core/network.h"
#include "core/problem.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace reference_engine {

// The coefficients of a stretch of segments. Room for its own use is kept from stretch to stretch.
struct Coefficients {
  // For each segment: what comes from the one before it and from the one after it.
  const double* lower() const { return up.data(); }
  const double* upper() const { return down.data() + 1; }

  std::vector<double> up, down; // by link, from the one before the first segment on
  std::vector<double> out;      // of each segment: all that leaves it, to its neighbours and elsewhere
};

class TransportClass {
public:
  // By links that are in no layer, m3/day. Those of another time can be put in their place for a while.
  struct Loose {
    std::vector<double> far, boundary_in, boundary_out;
    std::vector<double> leaving; // of the network's linked segments
  };
  Loose& loose() { return loose_; }
  const Loose& loose() const { return loose_; }

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

  // Of the network as it is now. `find_carried` leaves `out` alone.
  void find_coefficients(const Problem& problem, const Network& network, const LayerValues& layers,
                         Coefficients& into) const;
  void find_carried(const Problem& problem, const Network& network, const LayerValues& layers,
                    Coefficients& into) const;
  // visit(segment, m3/day) for what leaves segments begin to end for others than their neighbours.
  template <class Visit>
  void visit_leaving(const Network& network, std::size_t begin, std::size_t end, Visit visit) const {
    const auto linked = network.linked();
    for (auto k = static_cast<std::size_t>(std::ranges::lower_bound(linked, begin) - linked.begin());
         k < linked.size() && linked[k] < end; ++k)
      visit(linked[k], loose_.leaving[k]);
    for (std::size_t i = begin; !settling_.empty() && i < end; ++i)
      if (sink_[i] > 0 || network.settling_term(i) != nowhere) visit(i, settling_[i]);
  }
  double far(std::size_t term) const { return loose_.far[term] + (far_settling_.empty() ? 0 : far_settling_[term]); }
  // Through the boundary, for each boundary segment; what flows in has the boundary concentration.
  std::span<const double> boundary_in() const { return loose_.boundary_in; }
  std::span<const double> boundary_out() const { return loose_.boundary_out; }
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
  Loose loose_;
  std::vector<double> settling_, sink_, far_settling_;
};

} // namespace reference_engine

#endif
