// The segments' connections: pairs gathered into links, and the place of each link in the balance of its segments.
//
// Most links join a segment to the one that is numbered after it. These form layers, one value for each segment, which
// a step reads and computes in stretches, in wide vectors; no array of the model's length is stored for them. The
// others, to far segments and through the boundary, are few and are listed one by one.
#ifndef REFERENCE_ENGINE_CORE_NETWORK_H
#define REFERENCE_ENGINE_CORE_NETWORK_H

#include "core/problem.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace reference_engine {

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

constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();

// A link that is in no layer.
struct Link {
  std::size_t a = 0;
  int b = outside;
  Carrier carrier = Carrier::surface_flow;
  std::size_t at_a = 0, at_b = nowhere;           // positions of a and b among the segments with such links
  std::size_t into_a = nowhere, into_b = nowhere; // far terms that lead into a and b
  std::size_t boundary = nowhere;                 // position of a among the boundary segments
};

struct FarTerm {
  std::size_t target = 0, source = 0;
};

// What moves the water of a stretch of segments.
struct WaterMoved {
  std::vector<double> change; // of each volume, m3/day
  bool steady = true;         // no volume changes
  std::vector<double> out;    // its room for its own use
};

// The values of all layers' links at a stretch of segments. Its room serves the next stretch, too.
struct LayerValues {
  std::size_t begin = 0, end = 0;      // segments
  std::vector<std::vector<double>> of; // by layer, links begin - 1 to end - 1, m3/day, a flow counting upwards
};

class Network {
public:
  // What `update` works out. That of another time can be put in its place for a while.
  struct Water {
    double change = 0, out = 0, surface_in = 0, surface_out = 0;
  };
  struct Driven {
    std::vector<double> flows, exchanges;    // the elements
    std::vector<double> links;               // values of those in no layer
    std::vector<Water> loose_water;          // m3/day by those links, for each of the linked segments
    double water_in = 0, water_released = 0; // m3/day through the boundary
  };
  Driven& driven() { return now_; }
  const Driven& driven() const { return now_; }

  // Keeps a reference to the problem. Throws InputError for a pair or bottom that names a segment that is not there.
  // `settles`: make places for what settles to a bottom segment.
  Network(const Problem& problem, bool settles);

  // Elements of a Forcing that drive the links, ascending.
  const std::vector<std::size_t>& flow_elements() const { return flow_elements_; }
  const std::vector<std::size_t>& exchange_elements() const { return exchange_elements_; }

  // Takes the values of the elements, in their order, m3/s and m2/s. Throws RunError for an exchange below 0.
  // prescribed: change of volume, m3/day for each segment, that takes the place of that by the flows; what they do not
  // account for moves water only. Empty for none.
  void update(std::span<const double> flows, std::span<const double> exchanges, const std::vector<double>& prescribed);

  // Layers hold link i from segment i to i + 1.
  std::size_t layers() const { return layers_.size(); }
  Carrier carrier(std::size_t layer) const { return layers_[layer].carrier; }
  // For segments begin to end. A link that is not there has 0.
  void take_layers(std::size_t begin, std::size_t end, LayerValues& into) const;

  std::span<const Link> links() const { return links_; }
  std::span<const double> values() const { return now_.links; }   // m3/day for each of them; a flow counts from a to b
  std::span<const std::size_t> linked() const { return linked_; } // segments with such links, ascending
  std::span<const FarTerm> far_terms() const { return far_terms_; }                     // by target
  std::span<const std::size_t> boundary_segments() const { return boundary_segments_; } // segments, ascending
  // Segments that a layer, or what settles, joins to the one after them, ascending.
  std::vector<std::size_t> joined() const;
  std::size_t link_count() const { return links_.size() + layer_links_; }
  // The far term for what settles from segment i to its bottom segment; nowhere unless that segment is far.
  std::size_t settling_term(std::size_t i) const { return settling_terms_.empty() ? nowhere : settling_terms_[i]; }

  void move_water(const LayerValues& layers, WaterMoved& into) const;
  void find_water_out(const LayerValues& layers, double* out) const; // all that leaves each segment, m3/day
  // m3/s, the larger of in and out.
  void surface_flow(const LayerValues& layers, std::span<double> flow) const;
  double water_in() const { return now_.water_in; }             // m3/day through the boundary, all segments
  double water_released() const { return now_.water_released; } // the same, what leaves

private:
  struct Member {
    std::size_t element; // position in the values of the flow or exchange elements
    double factor;       // m3/day for each m3/s or m2/s
  };
  struct PairEnds;
  // Consecutive links that one element drives, within a block.
  struct Strand {
    std::size_t element, first, count, factors; // position of the first factor
    bool is_uniform = true;                     // all factors are the same
  };
  struct Layer {
    Carrier carrier;
    std::vector<Strand> strands;           // by block
    std::vector<std::size_t> block_starts; // position in strands, for each block and the end
    std::vector<double> factors;
    bool turns = false; // a factor is below 0
  };
  static constexpr std::size_t block = 1024; // links

  void check_ends() const;
  [[noreturn]] void refuse_exchange(std::size_t a, int b) const;
  std::vector<PairEnds> gather() const;
  void make_layers(std::vector<PairEnds> neighbours);
  void add_layer(Carrier carrier, std::vector<PairEnds> pairs);
  void make_links(const std::vector<PairEnds>& pairs);
  void place(bool settles);
  std::size_t far_term(std::size_t target, std::size_t source) const;
  void check_exchanges() const;
  void check_layer(std::size_t layer) const;
  void layer_values(std::size_t layer, std::size_t begin, std::size_t end, double* values) const;
  void find_loose_water();
  template <class Visit>
  void visit_linked(std::size_t begin, std::size_t end, Visit visit) const;

  const Problem& problem_;
  std::vector<std::size_t> flow_elements_, exchange_elements_;
  Driven now_;
  std::vector<double> prescribed_;
  std::vector<Layer> layers_;
  std::vector<std::size_t> water_layers_; // that move water
  std::size_t layer_links_ = 0;
  std::vector<Link> links_;
  std::vector<Member> members_;            // of all links
  std::vector<std::size_t> member_starts_; // of each link, and the end
  std::vector<std::size_t> linked_, boundary_segments_;
  std::vector<FarTerm> far_terms_;
  std::vector<std::size_t> settling_terms_;
};

} // namespace reference_engine

#endif
