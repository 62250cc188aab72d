#include "dataset/boundary_changes.h"

#include "platform/counted.h"

#include <algorithm>
#include <cstdint>

namespace vesk {

namespace {

constexpr std::size_t most_names = 5;

// Boundaries of one segment in one system: how many more there are, and how many points.
struct difference {
  std::int64_t records = 0, points = 0;
};

void count(const shared_list<boundary_data_type>& boundaries, int sign, std::vector<difference>& of_segments) {
  for (const boundary_data_type& boundary : boundaries) {
    if (boundary.segment < 0 || static_cast<std::size_t>(boundary.segment) >= of_segments.size()) continue;
    difference& of = of_segments[static_cast<std::size_t>(boundary.segment)];
    of.records += sign;
    of.points += sign * static_cast<std::int64_t>(boundary.points.size());
  }
}

std::vector<std::size_t> positions(const std::vector<bool>& marks) {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < marks.size(); ++i)
    if (marks[i]) found.push_back(i);
  return found;
}

std::string named(const std::vector<std::size_t>& segments, const prevesk_dataset_data_type& data) {
  std::string text = segments.size() == 1 ? "segment " : "segments ";
  const std::size_t names = std::min(segments.size(), most_names);
  for (std::size_t i = 0; i < names; ++i)
    text += (i == 0                                       ? ""
             : i + 1 == names && names == segments.size() ? " and "
                                                          : ", ") +
            std::to_string(segments[i] + 1) + " (" + shown_text(data.segments[segments[i]].name) + ")";
  return names == segments.size() ? text : text + " and " + std::to_string(segments.size() - names) + " more";
}

} // namespace

boundary_changes changes_of_boundaries(const prevesk_dataset_data_type& before,
                                       const prevesk_dataset_data_type& after) {
  const std::size_t segments = after.segments.size();
  boundary_changes changes;
  std::vector<bool> added(segments), removed(segments);
  for (std::size_t s = 0; s < std::min(before.systems.size(), after.systems.size()); ++s) {
    if (before.systems[s].boundaries.shares_with(after.systems[s].boundaries)) continue;
    std::vector<difference> of_segments(segments);
    count(before.systems[s].boundaries, -1, of_segments);
    count(after.systems[s].boundaries, 1, of_segments);
    bool adds = false, removes = false;
    for (std::size_t i = 0; i < segments; ++i) {
      if (of_segments[i].records == 0) continue;
      const bool is_new = of_segments[i].records > 0;
      (is_new ? adds : removes) = true;
      (is_new ? added : removed)[i] = true;
      if (!is_new) changes.points += static_cast<std::size_t>(-of_segments[i].points);
    }
    changes.added.systems += adds;
    changes.removed.systems += removes;
    changes.systems += adds || removes;
  }
  changes.added.segments = positions(added);
  changes.removed.segments = positions(removed);
  return changes;
}

std::string in_words(const boundary_changes& changes, const prevesk_dataset_data_type& data) {
  const auto& [added, removed, points, systems] = changes;
  const std::size_t more = added.segments.size(), fewer = removed.segments.size();
  const auto place = [&data](const std::vector<std::size_t>& segments, std::size_t in_systems) {
    return ": " + named(segments, data) + ", " + counted(in_systems, "system");
  };
  const bool has_both = more != 0 && fewer != 0, about_the_same = has_both && added.segments == removed.segments;
  std::string text;
  if (more != 0) text = counted(more, "boundary", "boundaries") + " added";
  if (more != 0 && !about_the_same) text += place(added.segments, added.systems);
  if (fewer == 0) return text;
  text += (about_the_same ? ", "
           : has_both     ? "; "
                          : "") +
          (has_both ? std::to_string(fewer) : counted(fewer, "boundary", "boundaries")) + " removed with " +
          (fewer == 1 ? "its " : "their ") + counted(points, "point");
  return text + place(removed.segments, about_the_same ? systems : removed.systems);
}

} // namespace vesk
