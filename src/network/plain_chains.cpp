// The layout without Graphviz: from each source down the greatest flow, row by row; bottom segments beneath.
#include "network/layout_steps.h"

#include <algorithm>
#include <cmath>

namespace vesk {

namespace {

constexpr double column_step = box_width + 34, row_step = box_height + 26;

class chain_layout {
public:
  chain_layout(const network_graph& network, std::span<const segment_number> members)
      : network_(network), members_(members), next_(network.segments.size(), no_segment), greatest_(next_.size(), -1.0),
        is_open_(next_.size(), false), is_entered_(next_.size(), false), is_beneath_(next_.size(), false) {
    for (const segment_number one : members) is_open_[one] = true;
    for (const network_flow& flow : network.flows) {
      if (!flow.is_water || !is_open_[flow.from] || !is_open_[flow.to]) continue;
      is_entered_[flow.to] = true;
      if (flow.mean <= greatest_[flow.from]) continue;
      greatest_[flow.from] = flow.mean;
      next_[flow.from] = static_cast<std::int32_t>(flow.to);
    }
    for (const segment_number one : members)
      if (is_open(network.segments[one].bottom)) is_beneath_[position(network.segments[one].bottom)] = true;
    const double columns = std::sqrt(static_cast<double>(members.size()) * 1.5);
    columns_ = std::max<std::size_t>(8, static_cast<std::size_t>(std::ceil(columns)));
  }

  std::vector<schematic_box> make() {
    for (const segment_number one : members_)
      if (!is_entered_[one] && !is_beneath_[one]) place_chain(one);
    for (const segment_number one : members_) // rings have no segment without an inflow
      if (!is_beneath_[one]) place_chain(one);
    for (const segment_number one : members_) place_chain(one);
    std::ranges::sort(boxes_, {}, &schematic_box::segment);
    return std::move(boxes_);
  }

private:
  static std::size_t position(std::int32_t reference) { return static_cast<std::size_t>(reference); }
  bool is_open(std::int32_t reference) const { return reference >= 0 && is_open_[position(reference)]; }

  void place_chain(segment_number first) {
    if (!is_open_[first]) return;
    const bool is_single = !is_open(next_[first]);
    if (!is_single && column_ > 0) begin_row();
    for (auto at = static_cast<std::int32_t>(first); is_open(at); at = next_[position(at)]) {
      if (column_ == columns_) begin_row();
      place_column(at);
    }
    if (!is_single) begin_row();
  }

  void place_column(std::int32_t top) {
    std::size_t depth = 0;
    for (auto at = top; is_open(at); at = network_.segments[position(at)].bottom) {
      is_open_[position(at)] = false;
      boxes_.push_back({static_cast<segment_number>(at),
                        {static_cast<double>(column_) * column_step, static_cast<double>(row_ + depth) * row_step}});
      ++depth;
    }
    deepest_ = std::max(deepest_, depth);
    ++column_;
  }

  void begin_row() {
    row_ += deepest_;
    column_ = deepest_ = 0;
  }

  const network_graph& network_;
  std::span<const segment_number> members_;
  std::vector<std::int32_t> next_; // by segment: destination of its greatest flow
  std::vector<double> greatest_;
  std::vector<bool> is_open_, is_entered_, is_beneath_; // by segment; open: a member without a box
  std::size_t columns_ = 8, column_ = 0, row_ = 0, deepest_ = 0;
  std::vector<schematic_box> boxes_;
};

} // namespace

schematic lay_out_plainly(const network_graph& network, std::span<const segment_number> members,
                          const std::vector<schematic_line>& lines) {
  schematic picture;
  picture.boxes = chain_layout(network, members).make();
  picture.lines = lines;
  return picture;
}

} // namespace vesk
