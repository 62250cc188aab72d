// The picture of a network: segments as boxes, and lines for what connects them.
//
// Lengths are in points at zoom 1; x to the right, y downwards, from the picture's upper left corner.
#pragma once

#include "network/network_graph.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace vesk {

struct schematic_point {
  double x = 0, y = 0;

  friend bool operator==(const schematic_point&, const schematic_point&) = default;
};

inline constexpr double box_width = 96, box_height = 34;

struct schematic_line {
  enum class kind {
    flow,     // of water; from the first end to the second
    solids,   // a flow that carries solids; from the first end to the second
    exchange, // in both directions
    bottom,   // from a segment to the one beneath
  };
  kind what = kind::flow;
  segment_number from = 0, to = 0;
  std::size_t position = 0;           // in the network's flows or exchanges; of a bottom: the upper segment
  std::vector<schematic_point> curve; // a start, and three more points for each Bézier curve that follows
};

struct schematic_box {
  segment_number segment = 0;
  schematic_point middle;
};

struct schematic {
  enum class method {
    dot,          // of Graphviz, in layers along the flow
    sfdp,         // of Graphviz, by forces
    plain_chains, // without it
  };
  method laid_out_by = method::plain_chains;
  std::vector<schematic_box> boxes; // by segment
  std::vector<schematic_line> lines;
  double width = 0, height = 0;
  std::optional<segment_number> centre; // the rest of the network is left out: it has too many segments
};

// Up to this many segments are all shown; of more, the neighbourhood of one of them.
inline constexpr std::size_t most_boxes = 10'000, neighbourhood_boxes = 300;

// The programs of Graphviz; empty: it is not installed.
struct graphviz_programs {
  std::filesystem::path dot, sfdp;
};
graphviz_programs find_graphviz(); // on the search path

// Lays the network out; this can take seconds. `centre`: where to look if there are too many segments; at first without
// one. `is_cancelled` is called several times a second; when it returns true the result is nothing. A Graphviz that
// fails or is too slow is replaced by something simpler.
std::optional<schematic> make_schematic(const network_graph& network, std::optional<segment_number> centre,
                                        const graphviz_programs& programs, const std::function<bool()>& is_cancelled);

// One sentence on what the picture lacks, and how to mend it; empty if nothing.
std::string remark_on(const schematic& picture, const network_graph& network);

// The box at a point; nothing between boxes.
std::optional<std::size_t> box_at(const schematic& picture, schematic_point where);

// The nearest box from `from` on in a direction, for the arrow keys: one of dx, dy is 1 or -1.
std::optional<std::size_t> next_box(const schematic& picture, std::size_t from, int dx, int dy);

} // namespace vesk
