#include "dataset/network.h"

#include "platform/counted.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace vesk {

namespace {

bool at_or_after(std::int32_t reference, std::size_t position) {
  return reference >= 0 && static_cast<std::size_t>(reference) >= position;
}

std::pair<std::int32_t&, std::int32_t&> ends(exchange_pair_record_type& pair) {
  return {pair.segment_one, pair.segment_two};
}
std::pair<std::int32_t&, std::int32_t&> ends(flow_pair_record_type& pair) {
  return {pair.from_segment, pair.to_segment};
}
std::pair<std::int32_t, std::int32_t> ends(const exchange_pair_record_type& pair) {
  return {pair.segment_one, pair.segment_two};
}
std::pair<std::int32_t, std::int32_t> ends(const flow_pair_record_type& pair) {
  return {pair.from_segment, pair.to_segment};
}

// Counts the records with a reference that has the property, except bottom references.
template <class Property>
segment_references count_but_bottoms(const prevesk_dataset_data_type& data, const Property& has) {
  segment_references counts;
  const auto count_pairs = [&](const auto& fields) {
    for (const auto& field : fields)
      for (const auto& function : field.functions)
        for (const auto& pair : function.pairs)
          if (has(ends(pair).first) || has(ends(pair).second)) ++counts.pairs;
  };
  count_pairs(data.exchange_fields);
  count_pairs(data.flow_fields);
  const auto count_in = [&](const auto& list) {
    return static_cast<std::size_t>(
        std::count_if(list.begin(), list.end(), [&](const auto& record) { return has(record.segment); }));
  };
  for (const system_data_type& system : data.systems) {
    counts.loads += count_in(system.loads);
    counts.boundaries += count_in(system.boundaries);
  }
  return counts;
}

template <class Property>
segment_references count_references(const prevesk_dataset_data_type& data, const Property& has) {
  segment_references counts = count_but_bottoms(data, has);
  for (const segment_data_type& segment : data.segments)
    if (has(segment.bottom_segment)) ++counts.bottoms;
  return counts;
}

// References to the segments from `first` on and before `end`.
auto names_between(std::size_t first, std::size_t end) {
  return [first, end](std::int32_t reference) { return at_or_after(reference, first) && !at_or_after(reference, end); };
}

// Lets the loops below edit only records that change, so that everything else stays shared with copies of the data set.
template <class List, class Property>
bool any_of(const List& list, const Property& has) {
  return std::any_of(list.begin(), list.end(), has);
}

// The references that a shift changes. The largest number stays: it names no segment, and one more would be below 0.
auto moves_from(std::size_t position) {
  return [position](std::int32_t reference) {
    return at_or_after(reference, position) && reference != std::numeric_limits<std::int32_t>::max();
  };
}

// Adds `by` to every reference at or after `position`.
void shift_references(prevesk_dataset_data_type& data, std::size_t position, std::int32_t by) {
  const auto moves = moves_from(position);
  const auto shift_pairs = [&](auto& fields) {
    for (std::size_t f = 0; f < fields.size(); ++f)
      for (std::size_t i = 0; i < fields[f].functions.size(); ++i) {
        const auto names_moved = [&](const auto& pair) { return moves(ends(pair).first) || moves(ends(pair).second); };
        if (!any_of(fields[f].functions[i].pairs, names_moved)) continue;
        auto& pairs = fields.edit(f).functions.edit(i).pairs;
        auto* all = pairs.edit_data();
        for (std::size_t p = 0; p < pairs.size(); ++p) {
          const auto [one, two] = ends(all[p]);
          if (moves(one)) one += by;
          if (moves(two)) two += by;
        }
      }
  };
  shift_pairs(data.exchange_fields);
  shift_pairs(data.flow_fields);
  for (std::size_t i = 0; i < data.segments.size(); ++i)
    if (moves(data.segments[i].bottom_segment)) data.segments.edit(i).bottom_segment += by;
  const auto shift_records = [&](auto system_data_type::*list) {
    for (std::size_t s = 0; s < data.systems.size(); ++s)
      for (std::size_t i = 0; i < (data.systems[s].*list).size(); ++i)
        if (moves((data.systems[s].*list)[i].segment)) (data.systems.edit(s).*list).edit(i).segment += by;
  };
  shift_records(&system_data_type::loads);
  shift_records(&system_data_type::boundaries);
}

// Removes the records with a reference that has the property, and sets such bottom references to none.
template <class Property>
void remove_references(prevesk_dataset_data_type& data, const Property& is_it) {
  const auto remove_pairs = [&](auto& fields) {
    for (std::size_t f = 0; f < fields.size(); ++f)
      for (std::size_t i = 0; i < fields[f].functions.size(); ++i) {
        const auto names_it = [&](const auto& pair) { return is_it(ends(pair).first) || is_it(ends(pair).second); };
        if (!any_of(fields[f].functions[i].pairs, names_it)) continue;
        auto& pairs = fields.edit(f).functions.edit(i).pairs;
        auto* all = pairs.edit_data();
        const auto kept = static_cast<std::size_t>(std::remove_if(all, all + pairs.size(), names_it) - all);
        pairs.erase(kept, pairs.size() - kept);
      }
  };
  remove_pairs(data.exchange_fields);
  remove_pairs(data.flow_fields);
  for (std::size_t i = 0; i < data.segments.size(); ++i)
    if (is_it(data.segments[i].bottom_segment)) data.segments.edit(i).bottom_segment = no_segment;
  const auto remove_records = [&](auto system_data_type::*list) {
    for (std::size_t s = 0; s < data.systems.size(); ++s)
      for (std::size_t i = (data.systems[s].*list).size(); i-- > 0;)
        if (is_it((data.systems[s].*list)[i].segment)) (data.systems.edit(s).*list).erase(i);
  };
  remove_records(&system_data_type::loads);
  remove_records(&system_data_type::boundaries);
}

} // namespace

std::string in_words(const segment_references& counts) {
  std::vector<std::string> parts;
  if (counts.pairs != 0) parts.push_back(counted(counts.pairs, "pair"));
  if (counts.bottoms != 0) parts.push_back(counted(counts.bottoms, "bottom reference"));
  if (counts.loads != 0) parts.push_back(counted(counts.loads, "load"));
  if (counts.boundaries != 0) parts.push_back(counted(counts.boundaries, "boundary", "boundaries"));
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i)
    text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
  return text;
}

void insert_segment(prevesk_dataset_data_type& data, std::size_t position) {
  data.segments.insert(std::min(position, data.segments.size()), {});
  reconcile_segment_records(data);
}

namespace {

void erase_segments(prevesk_dataset_data_type& data, std::size_t first, std::size_t count) {
  data.segments.erase(first, count);
  reconcile_segment_records(data);
  pull_bottom_references(data);
}

} // namespace

void erase_segment(prevesk_dataset_data_type& data, std::size_t position) {
  if (position < data.segments.size()) erase_segments(data, position, 1);
}

void reconcile_segment_records(prevesk_dataset_data_type& data, segment_range which) {
  data.reconcile_segments(which);
}

std::size_t pull_bottom_references(prevesk_dataset_data_type& data) {
  std::size_t pulled = 0;
  const std::size_t count = data.segments.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (!at_or_after(data.segments[i].bottom_segment, count)) continue;
    data.segments.edit(i).bottom_segment = static_cast<std::int32_t>(count - 1);
    ++pulled;
  }
  return pulled;
}

segment_references references_from(const prevesk_dataset_data_type& data, std::size_t position) {
  return count_references(data, [position](std::int32_t reference) { return at_or_after(reference, position); });
}

segment_references references_between(const prevesk_dataset_data_type& data, std::size_t first, std::size_t end) {
  return count_references(data, names_between(first, end));
}

segment_references references_to_appended(const prevesk_dataset_data_type& data, std::size_t first) {
  return count_but_bottoms(data, names_between(first, data.segments.size()));
}

segment_references insert_and_renumber(prevesk_dataset_data_type& data, std::size_t position) {
  const segment_references moved = count_references(data, moves_from(position));
  shift_references(data, position, 1);
  insert_segment(data, position);
  return moved;
}

segment_references erase_and_renumber(prevesk_dataset_data_type& data, std::size_t first, std::size_t count) {
  if (first >= data.segments.size()) return {};
  count = std::min(count, data.segments.size() - first);
  const auto erased = names_between(first, first + count);
  const segment_references removed = count_references(data, erased);
  remove_references(data, erased);
  shift_references(data, first + count, -static_cast<std::int32_t>(count));
  erase_segments(data, first, count);
  return removed;
}

std::string verify(const prevesk_dataset_data_type& data) {
  for (std::size_t i = 0; i < data.segments.size(); ++i) {
    const segment_data_type& segment = data.segments[i];
    const auto finding = [i](const char* what) { return "Segment " + std::to_string(i + 1) + what; };
    if (segment.parameters.size() != data.parameters.size())
      return finding(" does not have one record for each parameter.");
    if (segment.systems.size() != data.systems.size()) return finding(" does not have one record for each system.");
    if (at_or_after(segment.bottom_segment, data.segments.size()))
      return finding(" has a bottom segment past the last one.");
  }
  return {};
}

} // namespace vesk
