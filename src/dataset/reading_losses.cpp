#include "dataset/reading_losses.h"

#include "platform/counted.h"

#include <unordered_set>

namespace vesk {

namespace {

template <class List>
std::unordered_set<std::uint32_t> numbers_of(const List& list) {
  std::unordered_set<std::uint32_t> numbers;
  for (const auto& record : list) numbers.insert(record.isc);
  return numbers;
}

// The records of `old` whose ISC number is not in `fresh`.
template <class List>
List without_partner(const List& old, const List& fresh) {
  const auto known = numbers_of(fresh);
  List result;
  for (const auto& record : old)
    if (!known.contains(record.isc)) result.push_back(record);
  return result;
}

// Of all groups, since a constant may have moved to another group.
constant_group_data_type all_constants(const shared_list<constant_group_data_type>& groups) {
  constant_group_data_type all;
  for (const constant_group_data_type& group : groups)
    for (const constant_data_type& constant : group.constants) all.constants.push_back(constant);
  return all;
}

template <class List>
void add_names(std::vector<std::string>& names, const char* kind, const List& records) {
  for (const auto& record : records) names.push_back(std::string(kind) + " \"" + record.description.str() + "\"");
}

} // namespace

model_record_counts count_records(const model_lists& lists) {
  model_record_counts counts;
  counts.systems = lists.systems.size();
  counts.parameters = lists.parameters.size();
  counts.time_functions = lists.time_functions.size();
  counts.output_controls = lists.output_controls.size();
  for (const system_data_type& system : lists.systems) {
    counts.loads += system.loads.size();
    counts.boundaries += system.boundaries.size();
  }
  for (const constant_group_data_type& group : lists.constant_groups) counts.constants += group.constants.size();
  return counts;
}

std::string in_words(const model_record_counts& counts) {
  std::string words;
  const struct {
    std::size_t count;
    const char *singular, *plural;
  } kinds[] = {
      {counts.systems, "system", "systems"},         {counts.loads, "load", "loads"},
      {counts.boundaries, "boundary", "boundaries"}, {counts.parameters, "parameter", "parameters"},
      {counts.constants, "constant", "constants"},   {counts.time_functions, "time function", "time functions"},
      {counts.output_controls, "output", "outputs"}};
  for (const auto& kind : kinds)
    if (kind.count > 0) words += (words.empty() ? "" : ", ") + counted(kind.count, kind.singular, kind.plural);
  return words;
}

void reading_losses::note_dropped(const model_lists& stored, const model_lists& of_catalogue) {
  const constant_group_data_type old_constants = all_constants(stored.constant_groups);
  const constant_group_data_type new_constants = all_constants(of_catalogue.constant_groups);
  constant_group_data_type lost_constants;
  lost_constants.constants = without_partner(old_constants.constants, new_constants.constants);
  const model_lists lost{without_partner(stored.systems, of_catalogue.systems),
                         without_partner(stored.parameters, of_catalogue.parameters),
                         {lost_constants},
                         without_partner(stored.time_functions, of_catalogue.time_functions),
                         without_partner(stored.output_controls, of_catalogue.output_controls)};
  dropped = count_records(lost);
  add_names(names, "system", lost.systems);
  add_names(names, "parameter", lost.parameters);
  add_names(names, "constant", lost_constants.constants);
  add_names(names, "time function", lost.time_functions);
  add_names(names, "output", lost.output_controls);
}

} // namespace vesk
