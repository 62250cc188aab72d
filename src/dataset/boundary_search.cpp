// The boundary search: finds the segments that touch the outside of the model, and gives each a boundary condition.
#include "dataset/dataset.h"

#include <vector>

namespace vesk {

namespace {

// Marks the inner end of a pair whose other end is outside.
void mark(std::vector<bool>& touched, std::int32_t one, std::int32_t two) {
  const std::int32_t inner = one == no_segment ? two : two == no_segment ? one : no_segment;
  if (inner >= 0 && static_cast<std::size_t>(inner) < touched.size()) touched[static_cast<std::size_t>(inner)] = true;
}

std::vector<bool> segments_at_the_outside(const prevesk_dataset_data_type& data) {
  std::vector<bool> touched(data.segments.size());
  for (const auto& field : data.exchange_fields)
    for (const auto& function : field.functions)
      for (const auto& pair : function.pairs) mark(touched, pair.segment_one, pair.segment_two);
  for (const auto& field : data.flow_fields)
    for (const auto& function : field.functions)
      for (const auto& pair : function.pairs) mark(touched, pair.from_segment, pair.to_segment);
  return touched;
}

} // namespace

void prevesk_dataset_data_type::find_boundaries() {
  const std::vector<bool> needed = segments_at_the_outside(*this);
  boundary_data_type fresh;
  ensure_default_points(fresh.points);

  for (std::size_t s = 0; s < systems.size(); ++s) {
    // If a segment has several records, only the first counts: only that one is erased when it is not needed.
    std::vector<bool> found(needed.size());
    shared_list<boundary_data_type> kept;
    bool changed = false;
    for (const boundary_data_type& boundary : systems[s].boundaries) {
      const bool inside = boundary.segment >= 0 && static_cast<std::size_t>(boundary.segment) < needed.size();
      const auto position = inside ? static_cast<std::size_t>(boundary.segment) : 0;
      const bool first = inside && !found[position];
      if (first) found[position] = true;
      if (first && !needed[position]) {
        changed = true;
        continue;
      }
      kept.push_back(boundary);
    }
    for (std::size_t position = 0; position < needed.size(); ++position) {
      if (!needed[position] || found[position]) continue;
      fresh.segment = static_cast<std::int32_t>(position);
      kept.push_back(fresh);
      changed = true;
    }
    if (changed) systems.edit(s).boundaries = kept;
  }
}

} // namespace vesk
