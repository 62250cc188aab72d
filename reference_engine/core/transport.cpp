#include "core/transport.h"

#include <algorithm>
#include <cmath>

namespace reference_engine {

TransportClass::TransportClass(const Problem& problem, std::size_t system, bool settles)
    : systems_{system}, shares_(shares(problem, system)), settles_(settles) {}

std::array<TransportClass::Share, carriers> TransportClass::shares(const Problem& problem, std::size_t system) const {
  const System& it = problem.systems[system];
  const auto solids = [&](int field) {
    return it.flows && it.solids_field == field ? Share::particulate : Share::none;
  };
  return {it.flows ? Share::whole : Share::none,
          it.flows ? Share::dissolved : Share::none,
          solids(0),
          solids(1),
          solids(2),
          Share::none,
          it.disperses ? Share::whole : Share::none,
          it.disperses ? Share::dissolved : Share::none};
}

bool TransportClass::serves(const Problem& problem, std::size_t system, bool settles) const {
  if (settles || settles_ || shares(problem, system) != shares_) return false;
  const auto row = [&](std::size_t s) {
    return problem.dissolved.begin() + static_cast<std::ptrdiff_t>(problem.at(s, 0));
  };
  const auto count = static_cast<std::ptrdiff_t>(problem.segments.size());
  return std::equal(row(system), row(system) + count, row(systems_.front()));
}

double TransportClass::share(const Problem& problem, Share share, std::size_t segment) const {
  switch (share) {
  case Share::whole: return 1;
  case Share::dissolved: return problem.dissolved[problem.at(systems_.front(), segment)];
  case Share::particulate: return 1 - problem.dissolved[problem.at(systems_.front(), segment)];
  case Share::none: return 0;
  }
  return 0;
}

void TransportClass::update_rim(const Problem& problem, const Network& network) {
  rim_in_.assign(network.rim().size(), 0.0);
  for (const auto& [k, rim] : network.rim_links()) {
    const Link& link = network.links()[k];
    const Share kind = shares_[static_cast<std::size_t>(link.carrier)];
    const double value = network.values()[k];
    if (kind != Share::none && (is_exchange(link.carrier) || value < 0))
      rim_in_[rim] += std::abs(value) * share(problem, kind, link.a);
  }
}

// An upwind balance: what leaves a segment bears the segment's own concentration (Patankar, Numerical Heat Transfer
// and Fluid Flow, 1980, section 5.2); an exchange goes both ways. The share that a field carries is the donor's; what
// comes from the outside is divided as in the segment that takes it.
void TransportClass::update(const Problem& problem, const Network& network, std::span<const double> settling) {
  const CoefficientLayout& layout = network.layout();
  coefficients_.assign(layout.size(), 0.0);
  const auto links = network.links();
  const auto values = network.values();
  for (std::size_t k = 0; k < links.size(); ++k) {
    const Link& link = links[k];
    const Share kind = shares_[static_cast<std::size_t>(link.carrier)];
    if (kind == Share::none) continue;
    const std::size_t b = link.b == outside ? link.a : static_cast<std::size_t>(link.b);
    const bool both_ways = is_exchange(link.carrier);
    if (both_ways || values[k] > 0) {
      const double carried = values[k] * share(problem, kind, link.a);
      coefficients_[link.into_b] += carried;
      coefficients_[layout.out(link.a)] += carried;
    }
    if (both_ways || values[k] < 0) {
      const double carried = std::abs(values[k]) * share(problem, kind, b);
      coefficients_[link.into_a] += carried;
      coefficients_[link.out_of_b] += carried;
    }
  }
  sink_.assign(settling.size(), 0.0);
  for (std::size_t i = 0; i < settling.size(); ++i) {
    coefficients_[layout.out(i)] += settling[i];
    if (network.settling_place(i) == layout.unused())
      sink_[i] = settling[i];
    else
      coefficients_[network.settling_place(i)] += settling[i];
  }
}

} // namespace reference_engine
