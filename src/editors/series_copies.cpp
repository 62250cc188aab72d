#include "editors/series_copies.h"

namespace vesk {

namespace {

// The changes in one system.
struct copy_plan {
  std::vector<std::size_t> replaced; // positions of records
  std::vector<std::size_t> missing;  // positions of segments
};

template <class Record>
copy_plan plan_of(const shared_list<Record>& records, const std::vector<std::size_t>& segments, std::size_t network,
                  std::size_t source) { // position of a record to skip; the number of records: none
  std::vector<std::size_t> first_of(network, records.size());
  for (std::size_t i = records.size(); i-- > 0;)
    if (const auto segment = static_cast<std::size_t>(records[i].segment); records[i].segment >= 0 && segment < network)
      first_of[segment] = i;
  copy_plan plan;
  for (const std::size_t segment : segments) {
    const std::size_t record = first_of[segment];
    if (record == records.size())
      plan.missing.push_back(segment);
    else if (record != source)
      plan.replaced.push_back(record);
  }
  return plan;
}

template <class Record>
copy_plan plan_in(const prevesk_dataset_data_type& data, shared_list<Record> system_data_type::*list,
                  const series_ref& source, const copy_targets& targets, std::size_t system) {
  const shared_list<Record>& records = data.systems[system].*list;
  copy_plan plan =
      plan_of(records, targets.segments, data.segments.size(), system == source.owner ? source.index : records.size());
  if (source.kind == series_kind::boundary) plan.missing.clear();
  return plan;
}

template <class Record>
void take(Record& target, const Record& source, bool with_query) {
  target.points = source.points;
  if (!with_query) return;
  target.query = source.query;
  target.filled = source.filled;
  target.interpolation_type = source.interpolation_type;
}

template <class Record>
copy_counts copy_records(prevesk_dataset_data_type& data, shared_list<Record> system_data_type::*list,
                         const series_ref& source, const copy_targets& targets) {
  const Record copied = (data.systems[source.owner].*list)[source.index];
  copy_counts counts;
  for (const std::size_t system : targets.systems) {
    const copy_plan plan = plan_in(data, list, source, targets, system);
    if (plan.replaced.empty() && plan.missing.empty()) continue;
    shared_list<Record>& records = data.systems.edit(system).*list;
    for (const std::size_t record : plan.replaced) take(records.edit(record), copied, targets.with_query);
    for (const std::size_t segment : plan.missing) {
      Record added;
      added.segment = static_cast<std::int32_t>(segment);
      take(added, copied, targets.with_query);
      records.push_back(std::move(added));
    }
    counts.added += plan.missing.size();
    counts.replaced += plan.replaced.size();
  }
  return counts;
}

template <class Record>
copy_counts count_records(const prevesk_dataset_data_type& data, shared_list<Record> system_data_type::*list,
                          const series_ref& source, const copy_targets& targets) {
  copy_counts counts;
  for (const std::size_t system : targets.systems) {
    const copy_plan plan = plan_in(data, list, source, targets, system);
    counts.added += plan.missing.size();
    counts.replaced += plan.replaced.size();
  }
  return counts;
}

} // namespace

copy_counts count_copies(const prevesk_dataset_data_type& data, const series_ref& source, const copy_targets& targets) {
  return source.kind == series_kind::load ? count_records(data, &system_data_type::loads, source, targets)
                                          : count_records(data, &system_data_type::boundaries, source, targets);
}

copy_counts copy_series(prevesk_dataset_data_type& data, const series_ref& source, const copy_targets& targets) {
  return source.kind == series_kind::load ? copy_records(data, &system_data_type::loads, source, targets)
                                          : copy_records(data, &system_data_type::boundaries, source, targets);
}

} // namespace vesk
