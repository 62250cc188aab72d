#include "viewer/river_course.h"

#include "platform/counted.h"
#include "results/measured_series.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

namespace vesk {

namespace {

constexpr double metres_in_km = 1000;
constexpr std::size_t most_ranges = 8;

double value_of(const std::vector<double>& values, segment_number segment) {
  return segment < values.size() ? values[segment] : std::numeric_limits<double>::quiet_NaN();
}

std::string time_text(double date_time) {
  std::string text = text_of_moment(date_time);
  std::ranges::replace(text, 'T', ' ');
  return text;
}

} // namespace

void river_course::set_network(std::shared_ptr<const network_graph> network) {
  const bool same = network_ && network && network_->segments.size() == network->segments.size();
  network_ = std::move(network);
  if (!network_ || network_->segments.empty()) {
    ways_ = {};
    waypoints_.clear();
    from_ = to_ = 0;
    return;
  }
  if (!same) {
    waypoints_.clear();
    std::tie(from_, to_) = ends_of_main_course(*network_);
  }
  search();
}

void river_course::set_ends(segment_number from, segment_number to) {
  if (!network_ || std::max(from, to) >= network_->segments.size()) return;
  from_ = from;
  to_ = to;
  waits_for_end_ = false;
  waypoints_.clear();
  search();
}

void river_course::click(segment_number segment, bool with_control) {
  if (!network_ || segment >= network_->segments.size()) return;
  if (with_control) {
    if (std::erase(waypoints_, segment) == 0) waypoints_.push_back(segment);
    return search();
  }
  if (std::exchange(waits_for_end_, !waits_for_end_)) {
    to_ = segment;
  } else {
    from_ = to_ = segment;
    waypoints_.clear();
  }
  search();
}

void river_course::choose(std::size_t way) {
  if (way < ways_.ways.size()) chosen_ = way;
}

void river_course::search() {
  std::vector<segment_number> through{from_};
  through.insert(through.end(), waypoints_.begin(), waypoints_.end());
  through.push_back(to_);
  const std::vector<segment_number> before = way() ? way()->segments : std::vector<segment_number>();
  ways_ = find_ways(*network_, through);
  const auto same = std::ranges::find(ways_.ways, before, &river_way::segments);
  chosen_ = same == ways_.ways.end() ? 0 : static_cast<std::size_t>(same - ways_.ways.begin());
}

std::string river_course::note() const {
  if (!network_) return "Open the data set of these results to see its network.";
  if (network_->segments.empty()) return "The open data set has no segments.";
  const auto number = [](segment_number one) { return std::to_string(std::size_t{one} + 1); };
  if (waits_for_end_) return "Click the segment where the way ends.";
  std::string text;
  const auto add = [&text](const std::string& sentence) { text += (text.empty() ? "" : " ") + sentence; };
  if (ways_.ways.empty())
    add("No way leads from segment " + number(from_) + " to segment " + number(to_) +
        (waypoints_.empty() ? "." : " through " + counted(waypoints_.size(), "waypoint") + " in this order."));
  else if (ways_.follows == found_ways::course::upstream)
    add("The way goes against the flow.");
  else if (ways_.follows == found_ways::course::across)
    add("No flow leads from one to the other; the way follows connections of any kind.");
  if (!ways_.ways.empty() && !ways_.are_all)
    add("There are more ways than those listed, the shortest and the one with the greatest flow.");
  if (way() && std::isnan(way()->length)) add("Some segments have no length, so the axis counts segments.");
  return text;
}

std::pair<segment_number, segment_number> ends_of_main_course(const network_graph& network) {
  const std::size_t count = network.segments.size();
  std::vector<double> greatest(count, -1);
  std::vector<std::int32_t> next(count, no_segment);
  std::vector<bool> is_entered(count, false);
  for (const network_flow& flow : network.flows) {
    if (!flow.is_water) continue;
    is_entered[flow.to] = true;
    if (flow.mean <= greatest[flow.from]) continue;
    greatest[flow.from] = flow.mean;
    next[flow.from] = static_cast<std::int32_t>(flow.to);
  }
  std::size_t from = 0;
  const auto rank = [&](std::size_t segment) { // rank as the start of the main course
    return std::tuple(network.segments[segment].flows_in && !is_entered[segment] && next[segment] >= 0,
                      network.segments[segment].inflow, !is_entered[segment] && next[segment] >= 0);
  };
  for (std::size_t i = 1; i < count; ++i)
    if (rank(i) > rank(from)) from = i;
  std::vector<bool> is_passed(count, false);
  std::size_t to = from;
  is_passed[to] = true;
  while (next[to] >= 0 && !is_passed[static_cast<std::size_t>(next[to])]) {
    to = static_cast<std::size_t>(next[to]);
    is_passed[to] = true;
  }
  return {static_cast<segment_number>(from), static_cast<segment_number>(to)};
}

network_match match_network(const network_graph& network, const results_file& results) {
  const std::size_t count = network.segments.size();
  if (results.segments() != count)
    return {false, "The open data set has another network: " + counted(count, "segment") + ", the results have " +
                       std::to_string(results.segments()) + ". Open the data set of these results."};
  std::size_t renamed = 0;
  for (std::size_t i = 0; i < count; ++i)
    if (results.segment_name(i) != network.segments[i].name) ++renamed;
  const bool has_names = count > 0 && results.segment_name(count - 1) != "Segment " + std::to_string(count);
  if (renamed == 0 || !has_names) return {true, {}};
  if (renamed == count && count > 1)
    return {false, "The open data set has other segments than the results. Open the data set of these results."};
  return {true, counted(renamed, "segment") + " of the open data set " + (renamed == 1 ? "has" : "have") +
                    " another name in the results."};
}

std::string segments_in_words(const river_way& way) {
  std::vector<std::string> ranges;
  for (std::size_t i = 0; i < way.segments.size();) {
    std::size_t last = i;
    while (last + 1 < way.segments.size() && way.segments[last + 1] == way.segments[last] + 1) ++last;
    const std::string first = std::to_string(std::size_t{way.segments[i]} + 1);
    ranges.push_back(last == i ? first : first + "-" + std::to_string(std::size_t{way.segments[last]} + 1));
    i = last + 1;
  }
  std::string text;
  for (std::size_t i = 0; i < ranges.size() && i < most_ranges; ++i) text += (i == 0 ? "" : ", ") + ranges[i];
  if (ranges.size() > most_ranges) text += " and " + std::to_string(ranges.size() - most_ranges) + " more";
  return text;
}

std::unique_ptr<TGraphForm> river_chart(const river_chart_content& content) {
  const river_way& way = *content.way;
  way_axis axis = axis_along(way, *content.lengths);
  if (axis.is_in_metres)
    for (double& at : axis.at) at /= metres_in_km;
  std::vector<std::unique_ptr<general_graph_data>> series;
  const auto add = [&](const std::vector<double>& values, std::string label, line_look look) {
    auto data = std::make_unique<general_graph_data>(static_cast<std::int32_t>(way.segments.size()));
    data->x = axis.at;
    for (std::size_t i = 0; i < way.segments.size(); ++i) data->y[i] = value_of(values, way.segments[i]);
    data->not_a_date_axis = 1;
    data->label = std::move(label);
    data->look = look;
    series.push_back(std::move(data));
  };
  for (const scenario_profile& one : content.profiles)
    add(one.values, one.scenario_name + ", " + time_text(one.time), {.colour = 0, .pattern = one.scenario});
  if (content.bands) {
    add(content.bands->least, "least", {.colour = 2, .pattern = 1});
    add(content.bands->mean, "mean", {.colour = 3, .pattern = 0});
    add(content.bands->greatest, "greatest", {.colour = 1, .pattern = 1});
  }
  auto chart = std::make_unique<TGraphForm>();
  chart->set_titles(axis.is_in_metres ? "distance, km" : "segments along the way, counted", content.title);
  chart->add_series(std::move(series));
  return chart;
}

} // namespace vesk
