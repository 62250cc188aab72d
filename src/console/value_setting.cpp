#include "console/value_setting.h"

#include "query/series_file.h"

#include <algorithm>
#include <map>

namespace vesk {

namespace {

bool is_series(const value_assignment& it) {
  return it.ref.row->kind == path_kind::series;
}

void apply_all(prevesk_dataset_data_type& data, const std::vector<value_assignment>& assignments, bool series,
               const assignment_rules& rules) {
  for (const value_assignment& it : assignments)
    if (is_series(it) == series) apply(data, it, rules);
}

// What the record says of them. The data set is the one that has them.
void note_values(run_record& record, const std::vector<value_assignment>& assignments,
                 const prevesk_dataset_data_type& data) {
  for (const value_assignment& it : assignments) {
    recorded_value value{.path = it.ref.path, .assignment = std::string(text_of(it.how)), .value = it.text};
    if (!is_series(it)) value.result = it.ref.row->read(data, it.ref.at);
    record.values.push_back(std::move(value));
    if (!it.names_a_file()) continue;
    const std::size_t points = find_series(data, it.ref.row->series(it.ref.at))->points.size();
    record.queries.push_back({.series = it.ref.path,
                              .source = {.file = std::filesystem::absolute(it.text).native()},
                              .rows = points,
                              .points = points});
  }
}

} // namespace

bool set_values(TPreveskMainForm& form, const std::vector<value_assignment>& assignments, bool beyond_limits,
                const prevesk_dataset_data_type* before_queries) {
  refuse_repeated(assignments);
  std::map<std::string, point_list> files; // each is read once
  const assignment_rules rules{beyond_limits, [&files](const std::string& file) {
                                 const auto known = files.find(file);
                                 return known != files.end() ? known->second : files[file] = points_of_file(file);
                               }};
  prevesk_dataset_data_type data = *form.current_data_set;
  // Numbers and dates first: a query may be restricted to the period of the run, which they change.
  apply_all(data, assignments, false, rules);
  prevesk_dataset_data_type unfilled = data; // what queries give is recorded apart from the data set
  if (before_queries) {
    unfilled = *before_queries;
    apply_all(unfilled, assignments, false, rules);
  }
  apply_all(unfilled, assignments, true, rules);
  std::vector<series_ref> from_queries;
  for (const value_assignment& it : assignments)
    if (is_series(it) && !it.names_a_file()) from_queries.push_back(it.ref.row->series(it.ref.at));
  if (!form.skip_deferred_queries && !form.execute_deferred_queries_of(data, from_queries)) return false;
  apply_all(data, assignments, true, rules);
  form.take_content(data);
  form.recorded_data_set = std::move(unfilled);
  note_values(form.record_head, assignments, data);
  return true;
}

bool fill_other_series(TPreveskMainForm& form, const std::vector<series_ref>& set_from_files) {
  std::vector<series_ref> series;
  for_each_series(*form.current_data_set, [&](const series_ref& ref) {
    if (find_series(*form.current_data_set, ref)->query->deferred && std::ranges::count(set_from_files, ref) == 0)
      series.push_back(ref);
  });
  prevesk_dataset_data_type data = *form.current_data_set;
  if (!form.execute_deferred_queries_of(data, series)) return false;
  form.take_content(data);
  return true;
}

} // namespace vesk
