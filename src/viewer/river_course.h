// The way through the network on the page "Along the river": its two ends, waypoints, and the one chosen among the ways
// that connect them.
#pragma once

#include "charts/graph_form.h"
#include "network/ways.h"
#include "results/results_file.h"
#include "viewer/profile_store.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vesk {

class river_course {
public:
  // The network of the open data set; null: none. The ends are kept if the number of segments is unchanged; otherwise
  // they are set to those of the main course. The pointer must keep the network alive.
  void set_network(std::shared_ptr<const network_graph> network);
  const network_graph* network() const { return network_.get(); }

  void set_ends(segment_number from, segment_number to); // drops the waypoints
  // A click sets one end, then the other. With Ctrl it adds or removes a waypoint.
  void click(segment_number segment, bool with_control);
  void choose(std::size_t way); // position in ways()

  segment_number from() const { return from_; }
  segment_number to() const { return to_; }
  const std::vector<segment_number>& waypoints() const { return waypoints_; }
  const found_ways& ways() const { return ways_; }
  std::size_t chosen() const { return chosen_; }
  const river_way* way() const { return chosen_ < ways_.ways.size() ? &ways_.ways[chosen_] : nullptr; }

  // Remarks on the list of ways; empty: nothing unusual.
  std::string note() const;

private:
  void search();

  std::shared_ptr<const network_graph> network_;
  segment_number from_ = 0, to_ = 0;
  bool waits_for_end_ = false; // the next click sets the other end
  std::vector<segment_number> waypoints_;
  found_ways ways_;
  std::size_t chosen_ = 0;
};

// From the greatest inflow along the greatest flows to the end. The network must have a segment.
std::pair<segment_number, segment_number> ends_of_main_course(const network_graph& network);

// Why results cannot be shown on the network, or how they differ; one sentence, empty: they match. `fits`: can be
// shown.
struct network_match {
  bool fits = false;
  std::string remark = {};
};
network_match match_network(const network_graph& network, const results_file& results);

// "2-5, 9 and 4 more": the segments by their numbers, as ranges.
std::string segments_in_words(const river_way& way);

// Values over the distance, one series per profile; for bands, if present, minimum, mean and maximum. Distances in km
// if the lengths are known (`lengths` in m, by segment), otherwise counted in segments.
struct river_chart_content {
  const river_way* way = nullptr;
  const std::vector<double>* lengths = nullptr;
  std::vector<scenario_profile> profiles = {};
  const results_bands* bands = nullptr;
  std::string title = {}; // of the value axis
};
std::unique_ptr<TGraphForm> river_chart(const river_chart_content& content);

} // namespace vesk
