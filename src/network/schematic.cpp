#include "network/schematic.h"

#include "network/layout_steps.h"
#include "platform/counted.h"
#include "platform/processes.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <set>

namespace vesk {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t most_for_dot = 1'000; // more would take it minutes
constexpr milliseconds longest_by_dot(6'000), longest_by_sfdp(60'000);
constexpr double margin = 30; // around the boxes, for marks

// The nearest segments, by number of connections of any kind.
std::vector<segment_number> neighbourhood(const network_graph& network, segment_number centre) {
  std::vector<std::vector<segment_number>> beside(network.segments.size());
  const auto connect = [&](segment_number one, segment_number two) {
    beside[one].push_back(two);
    beside[two].push_back(one);
  };
  for (const network_flow& flow : network.flows) connect(flow.from, flow.to);
  for (const network_exchange& exchange : network.exchanges) connect(exchange.one, exchange.two);
  for (std::size_t i = 0; i < beside.size(); ++i)
    if (network.segments[i].bottom >= 0)
      connect(static_cast<segment_number>(i), static_cast<segment_number>(network.segments[i].bottom));
  std::set<segment_number> found{centre};
  std::deque<segment_number> open{centre};
  while (!open.empty() && found.size() < neighbourhood_boxes) {
    for (const segment_number one : beside[open.front()])
      if (found.size() < neighbourhood_boxes && found.insert(one).second) open.push_back(one);
    open.pop_front();
  }
  return {found.begin(), found.end()};
}

// Lays out connected segments with Graphviz. dot would stack all other segments, so they go below, in rows.
class layout {
public:
  layout(const network_graph& network, std::vector<segment_number> members, const graphviz_programs& programs,
         const std::function<bool()>& is_cancelled)
      : network_(network), lines_(lines_between(network, members)), programs_(programs), is_cancelled_(is_cancelled) {
    std::vector<bool> is_connected(network.segments.size(), false);
    for (const schematic_line& line : lines_) is_connected[line.from] = is_connected[line.to] = true;
    for (const segment_number one : members) (is_connected[one] ? connected_ : alone_).push_back(one);
  }

  std::optional<schematic> make() {
    schematic picture;
    if (!connected_.empty()) picture = lay_out_connected();
    if (is_cancelled_()) return std::nullopt;
    if (!alone_.empty()) put_below(picture, lay_out_plainly(network_, alone_, {}));
    drop_needless_bottoms(picture);
    finish(picture);
    return picture;
  }

private:
  // Drops lines to bottom segments that another connection joins anyway.
  static void drop_needless_bottoms(schematic& picture) {
    std::set<std::pair<segment_number, segment_number>> connected;
    for (const schematic_line& line : picture.lines)
      if (line.what != schematic_line::kind::bottom) connected.insert(std::minmax(line.from, line.to));
    std::erase_if(picture.lines, [&](const schematic_line& line) {
      return line.what == schematic_line::kind::bottom && connected.contains(std::minmax(line.from, line.to));
    });
  }

  schematic lay_out_connected() {
    using enum schematic::method;
    std::optional<schematic> made;
    if (connected_.size() <= most_for_dot) made = by_graphviz(programs_.dot, dot, longest_by_dot);
    if (made) {
      fold(*made);
      return *std::move(made);
    }
    made = by_graphviz(programs_.sfdp, sfdp, longest_by_sfdp);
    if (!made) return lay_out_plainly(network_, connected_, lines_);
    put_into_cells(*made);
    return *std::move(made);
  }

  std::optional<schematic> by_graphviz(const std::filesystem::path& program, schematic::method method,
                                       milliseconds longest) {
    return lay_out_by_graphviz(program, method, connected_, lines_, longest, is_cancelled_);
  }

  static void put_below(schematic& picture, const schematic& more) {
    double bottom = -box_height, left = 1e300;
    for (const schematic_box& box : picture.boxes)
      bottom = std::max(bottom, box.middle.y), left = std::min(left, box.middle.x);
    if (picture.boxes.empty()) left = 0;
    for (schematic_box box : more.boxes) {
      box.middle.x += left;
      box.middle.y += bottom + 2 * box_height;
      picture.boxes.push_back(box);
    }
    std::ranges::sort(picture.boxes, {}, &schematic_box::segment);
  }

  const network_graph& network_;
  const std::vector<schematic_line> lines_;
  const graphviz_programs& programs_;
  const std::function<bool()>& is_cancelled_;
  std::vector<segment_number> connected_, alone_;
};

// Where the straight line from the box's centre towards `to` leaves the box.
schematic_point edge_of_box(schematic_point middle, schematic_point to) {
  const double dx = to.x - middle.x, dy = to.y - middle.y;
  if (dx == 0 && dy == 0) return middle;
  const double scale = 1 / std::max(std::abs(dx) / (box_width / 2), std::abs(dy) / (box_height / 2));
  return {middle.x + dx * scale, middle.y + dy * scale};
}

} // namespace

std::vector<schematic_line> lines_between(const network_graph& network, std::span<const segment_number> members) {
  std::vector<bool> is_member(network.segments.size(), false);
  for (const segment_number one : members) is_member[one] = true;
  std::vector<schematic_line> lines;
  const auto add = [&](schematic_line::kind what, segment_number from, segment_number to, std::size_t position) {
    if (is_member[from] && is_member[to]) lines.push_back({what, from, to, position, {}});
  };
  for (std::size_t i = 0; i < network.flows.size(); ++i) {
    const network_flow& flow = network.flows[i];
    add(flow.is_water ? schematic_line::kind::flow : schematic_line::kind::solids, flow.from, flow.to, i);
  }
  for (std::size_t i = 0; i < network.exchanges.size(); ++i)
    add(schematic_line::kind::exchange, network.exchanges[i].one, network.exchanges[i].two, i);
  for (const segment_number one : members) {
    const std::int32_t bottom = network.segments[one].bottom;
    if (bottom >= 0) add(schematic_line::kind::bottom, one, static_cast<segment_number>(bottom), one);
  }
  return lines;
}

void finish(schematic& picture) {
  double left = 1e300, top = 1e300, right = -1e300, bottom = -1e300;
  const auto take = [&](schematic_point point, double dx, double dy) {
    left = std::min(left, point.x - dx), right = std::max(right, point.x + dx);
    top = std::min(top, point.y - dy), bottom = std::max(bottom, point.y + dy);
  };
  const auto middle_of = [&](segment_number segment) {
    return std::ranges::lower_bound(picture.boxes, segment, {}, &schematic_box::segment)->middle;
  };
  for (const schematic_box& box : picture.boxes) take(box.middle, box_width / 2, box_height / 2);
  for (schematic_line& line : picture.lines) {
    if (line.curve.empty()) {
      const schematic_point one = middle_of(line.from), two = middle_of(line.to);
      const schematic_point from = edge_of_box(one, two), to = edge_of_box(two, one);
      const auto part = [&](double share) {
        return schematic_point{from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
      };
      line.curve = {from, part(1.0 / 3), part(2.0 / 3), to};
    }
    for (const schematic_point& point : line.curve) take(point, 0, 0);
  }
  if (picture.boxes.empty()) left = top = right = bottom = 0;
  for (schematic_box& box : picture.boxes) box.middle.x += margin - left, box.middle.y += margin - top;
  for (schematic_line& line : picture.lines)
    for (schematic_point& point : line.curve) point.x += margin - left, point.y += margin - top;
  picture.width = right - left + 2 * margin;
  picture.height = bottom - top + 2 * margin;
}

graphviz_programs find_graphviz() {
  const std::filesystem::path usual = "/usr/bin";
  return {find_program("dot", usual), find_program("sfdp", usual)};
}

std::optional<schematic> make_schematic(const network_graph& network, std::optional<segment_number> centre,
                                        const graphviz_programs& programs, const std::function<bool()>& is_cancelled) {
  const std::size_t count = network.segments.size();
  const bool is_part = count > most_boxes;
  if (!centre || *centre >= count) centre = 0;
  std::vector<segment_number> members(is_part ? 0 : count);
  for (std::size_t i = 0; i < members.size(); ++i) members[i] = static_cast<segment_number>(i);
  if (is_part) members = neighbourhood(network, *centre);
  auto picture = layout(network, std::move(members), programs, is_cancelled).make();
  if (picture && is_part) picture->centre = centre;
  return picture;
}

std::string remark_on(const schematic& picture, const network_graph& network) {
  std::vector<std::string> remarks;
  if (network.segments.empty()) return "No segments. Add them in Data > Segments.";
  if (picture.centre)
    remarks.push_back("Of " + std::to_string(network.segments.size()) + " segments, the " +
                      std::to_string(picture.boxes.size()) + " nearest to segment " +
                      std::to_string(*picture.centre + 1) + " are shown.");
  if (network.flows.empty() && network.exchanges.empty())
    remarks.push_back("The segments are not connected. Add pairs in Data > Flows or Data > Exchanges.");
  else if (picture.laid_out_by == schematic::method::plain_chains)
    remarks.push_back("Plain rows: the package graphviz, which finds a better layout, is missing or did not finish.");
  if (network.bad_pairs > 0)
    remarks.push_back(counted(network.bad_pairs, "pair") + " cannot be drawn: " +
                      (network.bad_pairs == 1 ? "it does" : "they do") + " not connect two segments of the network.");
  std::string text;
  for (const std::string& one : remarks) text += (text.empty() ? "" : " ") + one;
  return text;
}

std::optional<std::size_t> box_at(const schematic& picture, schematic_point where) {
  for (std::size_t i = 0; i < picture.boxes.size(); ++i) {
    const schematic_point middle = picture.boxes[i].middle;
    if (std::abs(where.x - middle.x) <= box_width / 2 && std::abs(where.y - middle.y) <= box_height / 2) return i;
  }
  return std::nullopt;
}

std::optional<std::size_t> next_box(const schematic& picture, std::size_t from, int dx, int dy) {
  const schematic_point start = picture.boxes[from].middle;
  std::optional<std::size_t> best;
  double least = 1e300;
  for (std::size_t i = 0; i < picture.boxes.size(); ++i) {
    const double x = picture.boxes[i].middle.x - start.x, y = picture.boxes[i].middle.y - start.y;
    const double along = x * dx + y * dy, aside = std::abs(x * dy) + std::abs(y * dx);
    if (along <= 1 || aside > 2 * along) continue; // outside a wide wedge
    if (const double distance = along + 2 * aside; distance < least) least = distance, best = i;
  }
  return best;
}

} // namespace vesk
