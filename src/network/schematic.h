// The picture of a network: segments as boxes, their connections as lines.
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
    bottom,   // from a segment to the one beneath it
  };
  kind what = kind::flow;
  segment_number from = 0, to = 0;
  std::size_t position = 0;           // in the network's flows or exchanges; for a bottom: the upper segment
  std::vector<schematic_point> curve; // a start point, and three more points for each Bézier curve
};

struct schematic_box {
  segment_number segment = 0;
  schematic_point middle;
};

struct schematic {
  enum class method {
    dot,          // Graphviz, in layers along the flow
    sfdp,         // Graphviz, force-directed
    plain_chains, // without Graphviz
  };
  method laid_out_by = method::plain_chains;
  std::vector<schematic_box> boxes; // by segment
  std::vector<schematic_line> lines;
  double width = 0, height = 0;
  std::optional<segment_number> centre; // only its neighbourhood is drawn, because the network has too many segments
};

// Networks up to this size are drawn whole, larger ones around one segment.
inline constexpr std::size_t most_boxes = 10'000, neighbourhood_boxes = 300;

// The Graphviz programs; empty: not installed.
struct graphviz_programs {
  std::filesystem::path dot, sfdp;
};
graphviz_programs find_graphviz(); // searches the PATH

// Lays the network out; this can take seconds. `centre`: the segment to show if there are too many; initially none.
// `is_cancelled` is called several times a second; once it returns true, the result is nothing. If Graphviz fails or is
// too slow, a simpler layout is used.
std::optional<schematic> make_schematic(const network_graph& network, std::optional<segment_number> centre,
                                        const graphviz_programs& programs, const std::function<bool()>& is_cancelled);

// One sentence on the picture's limitations and how to fix them; empty if there are none.
std::string remark_on(const schematic& picture, const network_graph& network);

// The box at a point; nothing between boxes.
std::optional<std::size_t> box_at(const schematic& picture, schematic_point where);

// The nearest box to `from` in a direction, for the arrow keys: one of dx, dy is 1 or -1.
std::optional<std::size_t> next_box(const schematic& picture, std::size_t from, int dx, int dy);

} // namespace vesk
