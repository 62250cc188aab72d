// The steps of make_schematic.
#pragma once

#include "network/schematic.h"

#include <chrono>
#include <span>

namespace vesk {

// The connections between members, as lines without curves; `members` in ascending order.
std::vector<schematic_line> lines_between(const network_graph& network, std::span<const segment_number> members);

// Computes boxes and curves with a Graphviz program. Nothing if it fails, exceeds `longest`, or is cancelled.
std::optional<schematic> lay_out_by_graphviz(const std::filesystem::path& program, schematic::method method,
                                             std::span<const segment_number> members,
                                             const std::vector<schematic_line>& lines,
                                             std::chrono::milliseconds longest,
                                             const std::function<bool()>& is_cancelled);

// In rows along the flow, with straight lines.
schematic lay_out_plainly(const network_graph& network, std::span<const segment_number> members,
                          const std::vector<schematic_line>& lines);

// Cuts a picture that is much wider than high into rows, which run right and left in turn.
void fold(schematic& picture);

// Moves the boxes into nearby cells of a grid, and removes the curves.
void put_into_cells(schematic& picture);

// Adds straight lines between boxes where curves are missing, and computes the picture's size, which includes
// everything.
void finish(schematic& picture);

} // namespace vesk
