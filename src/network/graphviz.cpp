// Layout with dot or sfdp. They get positions instead of names and no texts, so nothing in a data set can be mistaken
// for Graphviz syntax. Their output is treated as untrusted.
#include "network/layout_steps.h"
#include "platform/program_output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <sys/mman.h>

namespace vesk {

namespace {

constexpr double points_per_inch = 72;
constexpr std::size_t longest_output = std::size_t{256} << 20;

std::string number(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return {text, end};
}

using line_ends = std::pair<segment_number, segment_number>;

// The lines as written for Graphviz. Within a rank dot orders segments by the order in which a line names them, so a
// line between a segment and the one beneath it names the upper one first, whatever its direction.
class written_lines {
public:
  explicit written_lines(const std::vector<schematic_line>& lines) {
    std::set<line_ends> bottoms; // upper and lower segment
    for (const schematic_line& line : lines)
      if (line.what == schematic_line::kind::bottom && joins(line.from, line.to)) bottoms.emplace(line.from, line.to);
    for (const schematic_line& line : lines) {
      const bool goes_down = bottoms.contains({line.from, line.to}), goes_up = bottoms.contains({line.to, line.from});
      is_vertical_.push_back(goes_down || goes_up);
      // A single ring makes dot ignore the order of the whole rank.
      is_left_out_.push_back(line.what == schematic_line::kind::bottom && !goes_down);
      is_turned_.push_back(goes_up);
      ends_.push_back(goes_up ? line_ends(line.to, line.from) : line_ends(line.from, line.to));
    }
  }

  const line_ends& ends(std::size_t line) const { return ends_[line]; }
  bool is_turned(std::size_t line) const { return is_turned_[line]; }
  bool is_vertical(std::size_t line) const { return is_vertical_[line]; }
  bool is_left_out(std::size_t line) const { return is_left_out_[line]; }

private:
  // False if both are already in one column: the line would close a ring of bottoms.
  bool joins(segment_number one, segment_number two) {
    const segment_number a = column_of(one), b = column_of(two);
    column_[a] = b;
    return a != b;
  }
  segment_number column_of(segment_number segment) {
    for (auto found = column_.find(segment); found != column_.end() && found->second != segment;
         found = column_.find(segment)) {
      const auto next = column_.find(found->second);
      if (next != column_.end()) found->second = next->second;
      segment = found->second;
    }
    return segment;
  }

  std::vector<line_ends> ends_;
  std::vector<bool> is_turned_, is_vertical_, is_left_out_;
  std::map<segment_number, segment_number> column_; // segments stacked on each other; a member identifies the column
};

std::string graph_text(schematic::method method, std::span<const segment_number> members,
                       const std::vector<schematic_line>& lines, const written_lines& written) {
  const bool by_dot = method == schematic::method::dot;
  std::string text =
      "digraph {\nnode [shape=box fixedsize=true label=\"\" width=" + number(box_width / points_per_inch) +
      " height=" + number(box_height / points_per_inch) + "]\n";
  text += by_dot ? "rankdir=LR nodesep=0.35 ranksep=0.4\n" : "splines=false overlap=true\n";
  for (const segment_number one : members) text += std::to_string(one) + ";\n";
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (written.is_left_out(i)) continue;
    const std::string ends = std::to_string(written.ends(i).first) + "->" + std::to_string(written.ends(i).second);
    if (by_dot && written.is_vertical(i))
      text += "{rank=same " + ends + "}\n";
    else if (by_dot && lines[i].what != schematic_line::kind::flow)
      text += ends + " [weight=0]\n"; // an exchange does not indicate which way is downstream
    else
      text += ends + "\n";
  }
  return text + "}\n";
}

file_descriptor in_memory(std::string_view text) {
  file_descriptor file(memfd_create("network", MFD_CLOEXEC));
  if (file.is_open()) write_all(file.get(), text, {}, "the network's layout");
  return file;
}

// Reads the words of one line.
class word_reader {
public:
  explicit word_reader(std::string_view line) : rest_(line) {}

  std::string_view word() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size()));
    const std::string_view found = rest_.substr(0, rest_.find(' '));
    rest_.remove_prefix(found.size());
    return found;
  }
  template <class Number>
  bool read(Number& value) {
    const std::string_view text = word();
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
  }
  bool read(schematic_point& point) {
    if (!read(point.x) || !read(point.y) || !std::isfinite(point.x) || !std::isfinite(point.y)) return false;
    point.x *= points_per_inch;
    point.y *= -points_per_inch; // Graphviz's y axis points up
    return true;
  }

private:
  std::string_view rest_;
};

// The "plain" format: "node name x y ...", "edge from to count x y ...", in inches.
class plain_reader {
public:
  plain_reader(std::span<const segment_number> members, const std::vector<schematic_line>& lines,
               const written_lines& written)
      : members_(members), lines_(lines), written_(written), has_box_(members.size(), false),
        used_(lines.size(), false) {
    for (std::size_t i = 0; i < lines.size(); ++i) order_.push_back(i);
    std::ranges::stable_sort(order_, {}, [&](std::size_t i) { return written_.ends(i); });
  }

  std::optional<schematic> read(std::string_view text) {
    picture_.boxes.resize(members_.size());
    picture_.lines = lines_;
    while (!text.empty()) {
      const std::string_view line = text.substr(0, text.find('\n'));
      text.remove_prefix(std::min(text.size(), line.size() + 1));
      word_reader words(line);
      const std::string_view what = words.word();
      if (what == "node" && !take_node(words)) return std::nullopt;
      if (what == "edge" && !take_edge(words)) return std::nullopt;
    }
    if (std::ranges::find(has_box_, false) != has_box_.end()) return std::nullopt;
    return std::move(picture_);
  }

private:
  bool take_node(word_reader& words) {
    segment_number segment = 0;
    schematic_point middle;
    if (!words.read(segment) || !words.read(middle)) return false;
    const auto found = std::ranges::lower_bound(members_, segment);
    if (found == members_.end() || *found != segment) return false;
    const auto position = static_cast<std::size_t>(found - members_.begin());
    has_box_[position] = true;
    picture_.boxes[position] = {segment, middle};
    return true;
  }

  // Several lines may connect the same two segments.
  bool take_edge(word_reader& words) {
    line_ends ends;
    std::size_t count = 0;
    if (!words.read(ends.first) || !words.read(ends.second) || !words.read(count)) return false;
    auto found = std::ranges::lower_bound(order_, ends, {}, [&](std::size_t i) { return written_.ends(i); });
    while (found != order_.end() && written_.ends(*found) == ends && used_[*found]) ++found;
    if (found == order_.end() || written_.ends(*found) != ends) return false;
    used_[*found] = true;
    auto& curve = picture_.lines[*found].curve;
    for (std::size_t i = 0; i < count; ++i)
      if (!words.read(curve.emplace_back())) return false;
    if (written_.is_turned(*found)) std::ranges::reverse(curve);
    if (count % 3 != 1 || count < 4) curve.clear(); // fall back to a straight line
    return true;
  }

  std::span<const segment_number> members_;
  const std::vector<schematic_line>& lines_;
  const written_lines& written_;
  std::vector<bool> has_box_, used_;
  std::vector<std::size_t> order_; // lines sorted by their ends
  schematic picture_;
};

} // namespace

std::optional<schematic> lay_out_by_graphviz(const std::filesystem::path& program, schematic::method method,
                                             std::span<const segment_number> members,
                                             const std::vector<schematic_line>& lines,
                                             std::chrono::milliseconds longest,
                                             const std::function<bool()>& is_cancelled) {
  if (program.empty() || is_cancelled()) return std::nullopt;
  const written_lines written(lines);
  const file_descriptor graph = in_memory(graph_text(method, members, lines, written));
  if (!graph.is_open()) return std::nullopt;
  using clock = std::chrono::steady_clock;
  const auto end_of_patience = clock::now() + longest;
  std::string output;
  const std::string name = "/proc/self/fd/" + std::to_string(handed_descriptor);
  const program_end end = read_program(program, {"-Tplain", name}, graph, longest, [&](std::string_view piece) {
    output += piece;
    return !is_cancelled() && output.size() < longest_output && clock::now() < end_of_patience;
  });
  // Graphviz exits with status 1 for some warnings; incomplete pictures are refused below.
  if (end.how != program_end::way::exited || is_cancelled()) return std::nullopt;
  auto picture = plain_reader(members, lines, written).read(output);
  if (picture) picture->laid_out_by = method;
  return picture;
}

} // namespace vesk
