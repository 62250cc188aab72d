#include "network/segment_text.h"

#include "platform/counted.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace vesk {

namespace {

constexpr std::size_t most_listed = 8;

std::string number_text(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", value);
  return text;
}

std::string flow_text(const std::string& where, double mean) {
  return where + " (" + number_text(mean) + " m3/s)";
}

// "in from: 4 (12 m3/s), the outside (3 m3/s)"; nothing for an empty list.
std::string list_line(const char* title, const std::vector<std::string>& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size() && i < most_listed; ++i) text += (i == 0 ? "" : ", ") + items[i];
  if (items.size() > most_listed) text += " and " + std::to_string(items.size() - most_listed) + " more";
  return text.empty() ? text : "\n" + std::string(title) + ": " + text;
}

} // namespace

std::string describe_segment(const network_graph& network, std::size_t segment) {
  const network_segment& it = network.segments[segment];
  const auto number = [](segment_number one) { return std::to_string(std::size_t{one} + 1); };
  std::vector<std::string> into, out_of, solids, exchanged;
  if (it.flows_in) into.push_back(flow_text("the outside", it.inflow));
  for (const network_flow& flow : network.flows) {
    if (flow.from != segment && flow.to != segment) continue;
    const bool comes = flow.to == segment;
    const std::string other = number(comes ? flow.from : flow.to);
    if (flow.is_water)
      (comes ? into : out_of).push_back(flow_text(other, flow.mean));
    else
      solids.push_back(comes ? "from " + other : "to " + other);
  }
  if (it.flows_out) out_of.push_back(flow_text("the outside", it.outflow));
  for (const network_exchange& one : network.exchanges)
    if (one.one == segment || one.two == segment) exchanged.push_back(number(one.one == segment ? one.two : one.one));
  if (it.exchanges_outside) exchanged.push_back("the outside");
  std::string text = "Segment " + segment_label(network, segment);
  if (!std::isnan(it.length)) text += "\nLength: " + number_text(it.length) + " m";
  text += list_line("Water from", into) + list_line("Water to", out_of) + list_line("Solids", solids) +
          list_line("Exchange with", exchanged);
  if (it.bottom >= 0) text += "\nBeneath it: " + number(static_cast<segment_number>(it.bottom));
  if (it.loads > 0) text += "\n" + counted(it.loads, "load");
  if (it.boundaries > 0) text += "\n" + counted(it.boundaries, "boundary", "boundaries");
  return text;
}

} // namespace vesk
