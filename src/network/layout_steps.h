// The steps of make_schematic.
#pragma once

#include "network/schematic.h"

#include <chrono>
#include <span>

namespace vesk {

// The connections between two of the members, as lines without a curve; `members` ascend.
std::vector<schematic_line> lines_between(const network_graph& network, std::span<const segment_number> members);

// Gives boxes and curves by a program of Graphviz. Nothing when it fails, takes longer, or is cancelled.
std::optional<schematic> lay_out_by_graphviz(const std::filesystem::path& program, schematic::method method,
                                             std::span<const segment_number> members,
                                             const std::vector<schematic_line>& lines,
                                             std::chrono::milliseconds longest,
                                             const std::function<bool()>& is_cancelled);

// In rows along the flow, with straight lines.
schematic lay_out_plainly(const network_graph& network, std::span<const segment_number> members,
                          const std::vector<schematic_line>& lines);

// Cuts a picture that is much wider than high into rows, which run to the right and to the left in turn.
void fold(schematic& picture);

// Moves the boxes into the cells of a grid, near to where they are, and takes the curves away.
void put_into_cells(schematic& picture);

// Straight lines from box to box for those without a curve, and the picture's size, with all of it in sight.
void finish(schematic& picture);

} // namespace vesk
