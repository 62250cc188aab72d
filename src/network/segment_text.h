// Describes one segment of a network.
#pragma once

#include "network/network_graph.h"

#include <string>

namespace vesk {

// Lines of text: the label, the length, where water comes from and goes to with mean flows, exchanges, the bottom
// segment, loads and boundaries. Long lists end in "and 7 more". `segment` must exist in the network.
std::string describe_segment(const network_graph& network, std::size_t segment);

} // namespace vesk
