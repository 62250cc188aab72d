// The segments' connections: pairs gathered into links, and the place of each link in the balance of its segments.
//
// A balance reads three neighbours at once where segments are numbered along the water (i - 1, i, i + 1); every other
// connection is a "far term". A chain has none, and any network is served.
#ifndef REFERENCE_ENGINE_CORE_NETWORK_H
#define REFERENCE_ENGINE_CORE_NETWORK_H

#include "core/problem.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace reference_engine {

// Where a coefficient stands in one array of coefficients, m3/day. `lower` multiplies the concentration of i - 1,
// `upper` that of i + 1, `out` that of i itself; `rim_out` belongs to segments that touch the outside.
struct CoefficientLayout {
  std::size_t segments = 0, far_terms = 0, rim = 0;

  std::size_t out(std::size_t i) const { return i; }
  std::size_t lower(std::size_t i) const { return segments + i; }
  std::size_t upper(std::size_t i) const { return 2 * segments + i; }
  std::size_t far(std::size_t k) const { return 3 * segments + k; }
  std::size_t rim_out(std::size_t r) const { return 3 * segments + far_terms + r; }
  std::size_t unused() const { return 3 * segments + far_terms + rim; } // written, never read
  std::size_t size() const { return unused() + 1; }
};

// What a link carries, by the field of its pairs.
enum class Carrier : std::uint8_t {
  surface_flow,
  pore_flow,
  solids_1,
  solids_2,
  solids_3,
  evaporation,
  surface_exchange,
  pore_exchange
};
constexpr std::size_t carriers = 8;
constexpr bool is_exchange(Carrier carrier) {
  return carrier >= Carrier::surface_exchange;
}
constexpr bool moves_water(Carrier carrier) {
  return carrier == Carrier::surface_flow || carrier == Carrier::pore_flow || carrier == Carrier::evaporation;
}

struct Link {
  std::size_t a = 0;
  int b = outside;
  Carrier carrier = Carrier::surface_flow;
  std::size_t into_a = 0, into_b = 0; // coefficients for what reaches a from b, and b from a
  std::size_t out_of_b = 0;           // coefficient for what leaves b; the unused one for the outside
};

// A link over the rim, by its position among the links and that of its segment in the rim.
struct RimLink {
  std::size_t link = 0, rim = 0;
};

struct FarTerm {
  std::size_t target = 0, source = 0;
};

class Network {
public:
  // Keeps a reference to the problem. Throws InputError for a pair or bottom that names a segment that is not there.
  // `settles`: make places for what settles to a bottom segment.
  Network(const Problem& problem, bool settles);

  // Elements of a Forcing that drive the links, ascending.
  const std::vector<std::size_t>& flow_elements() const { return flow_elements_; }
  const std::vector<std::size_t>& exchange_elements() const { return exchange_elements_; }

  // Works out the links' values from those of the elements, in their order, m3/s and m2/s. Throws RunError for an
  // exchange below 0. prescribed: change of volume, m3/day for each segment, that takes the place of that by the flows;
  // what they do not account for moves water only. Empty for none.
  void update(std::span<const double> flows, std::span<const double> exchanges, const std::vector<double>& prescribed);

  const CoefficientLayout& layout() const { return layout_; }
  std::span<const Link> links() const { return links_; }
  // m3/day for each link; a flow counts from a to b.
  std::span<const double> values() const { return values_; }
  std::span<const FarTerm> far_terms() const { return far_terms_; } // by target
  std::span<const std::size_t> rim() const { return rim_; }         // segments, ascending
  std::span<const RimLink> rim_links() const { return rim_links_; }
  // Coefficient for what settles from segment i to its bottom segment; only where i has one.
  std::size_t settling_place(std::size_t i) const { return settling_places_[i]; }

  std::span<const double> volume_change() const { return volume_change_; } // m3/day for each segment
  std::span<const double> water_out() const { return water_out_; }         // m3/day for each segment
  std::span<const double> surface_flow() const { return surface_flow_; }   // m3/s, the larger of in and out
  double water_in() const { return water_in_; }                            // m3/day over the rim, all segments
  double water_released() const { return water_released_; }                // the same, what leaves
  bool steady() const { return steady_; }                                  // no volume changes

private:
  struct Member {
    std::size_t element; // position in the values of the flow or exchange elements
    double factor;
  };
  struct PairEnds;

  void check_ends(const Problem& problem) const;
  std::vector<PairEnds> gather(const Problem& problem) const;
  void make_links(std::vector<PairEnds> pairs, bool net_flows);
  void place(const Problem& problem, bool settles);
  std::size_t place_of(std::size_t target, std::size_t source) const;
  std::size_t rim_position(std::size_t segment) const;
  [[noreturn]] void refuse_exchange(const Link& link) const;
  void balance_water();
  void settle_volume_change(const std::vector<double>& prescribed);

  const Problem& problem_;
  CoefficientLayout layout_;
  std::vector<Link> links_;
  std::vector<Member> members_;            // of all links
  std::vector<std::size_t> member_starts_; // of each link, and the end
  std::vector<FarTerm> far_terms_;
  std::vector<std::size_t> rim_;
  std::vector<RimLink> rim_links_;
  std::vector<std::size_t> settling_places_;
  std::vector<double> values_;
  std::vector<double> volume_change_, water_out_, surface_flow_, surface_in_;
  std::vector<std::size_t> flow_elements_, exchange_elements_;
  double water_in_ = 0, water_released_ = 0;
  bool steady_ = true;
};

} // namespace reference_engine

#endif
