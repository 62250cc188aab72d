// What there is to say about one segment of a network.
#pragma once

#include "network/network_graph.h"

#include <string>

namespace vesk {

// Lines of text: the label, the length, where water comes from and goes to with the mean flows, exchanges, the bottom
// segment, loads and boundaries. Long lists end in "and 7 more". `segment` must be one of the network.
std::string describe_segment(const network_graph& network, std::size_t segment);

} // namespace vesk
