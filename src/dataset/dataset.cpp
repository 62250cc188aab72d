#include "dataset/dataset.h"

#include <algorithm>
#include <cmath>

namespace vesk {

thread_local std::uint32_t segment_data_type::default_segment_type = 0;

prevesk_dataset_data_type::prevesk_dataset_data_type() {
  const double now = current_date_time();
  seed_date = end_date = skip_date = std::floor(now);
  seed_time = end_time = skip_time = now - std::floor(now);
  for (const char* name : {"Surface Water", "Pore Water"}) {
    exchange_field_data_type field;
    field.description = name;
    exchange_fields.push_back(field);
  }
  for (const char* name :
       {"Surface Water", "Pore Water", "Solids 1", "Solids 2", "Solids 3", "Evaporation/Precipitation"}) {
    flow_field_data_type field;
    field.description = name;
    flow_fields.push_back(field);
  }
}

prevesk_dataset_data_type::prevesk_dataset_data_type(std::shared_ptr<const model_catalogue> catalogue)
    : prevesk_dataset_data_type() {
  if (!catalogue) return;
  catalogue_.pointer = std::move(catalogue);
  const model_catalogue& tables = *catalogue_.pointer;
  if (!tables.models.empty()) model_type = tables.models.front().model_id;
  refresh_from_catalogue(false);
  for (const solution_technique_type& technique : tables.solution_techniques) solution_techniques.push_back(technique);
}

void prevesk_dataset_data_type::apply_seed() const {
  const moment_type start = moment_type::from_date_time(start_date_time());
  moment_type::set_seed(start.date, start.time);
  moment_type::moment_seed_is_set = true;
}

void prevesk_dataset_data_type::apply_thread_defaults() const {
  apply_seed();
  if (!catalogue()) return;
  const catalogue_model* known = catalogue()->find_model(model_type);
  if (known && !known->segment_types.empty())
    segment_data_type::default_segment_type = known->segment_types.front().vesk_segment_type_id;
}

void prevesk_dataset_data_type::resize_segments(std::size_t count) {
  segments.resize(count);
  reconcile_segments();
}

bool prevesk_dataset_data_type::has_lists_of_catalogue() const {
  const catalogue_model* rows = catalogue() ? catalogue()->find_model(model_type) : nullptr;
  if (!rows) return false;
  const auto same_parameter = [](const parameter_data_type& one, const catalogue_parameter& row) {
    return one.isc == row.isc;
  };
  const auto same_system = [](const system_data_type& one, const catalogue_system& row) {
    return one.isc == row.model_system_id;
  };
  return std::equal(parameters.begin(), parameters.end(), rows->parameters.begin(), rows->parameters.end(),
                    same_parameter) &&
         std::equal(systems.begin(), systems.end(), rows->systems.begin(), rows->systems.end(), same_system);
}

// A fill drops what its catalogue lacks. So it is only done where it drops nothing: the catalogue can have been
// exchanged for one without the model, or with other systems in it.
void prevesk_dataset_data_type::reconcile_segments(segment_range which) {
  if (!has_lists_of_catalogue()) {
    segment_data_type fresh; // its lists are shared by all segments that have none
    fresh.parameters.resize(parameters.size());
    fresh.systems.resize(systems.size());
    const auto lengthen = [](auto& items, const auto& whole) {
      if (items.empty())
        items = whole;
      else
        items.resize(whole.size());
    };
    for (std::size_t i = which.first; i < std::min(which.end, segments.size()); ++i) {
      if (segments[i].parameters.size() != parameters.size()) lengthen(segments.edit(i).parameters, fresh.parameters);
      if (segments[i].systems.size() != systems.size()) lengthen(segments.edit(i).systems, fresh.systems);
    }
    return;
  }
  fill_parameters(parameters.size(), true, which);
  fill_systems(systems.size(), true, which);
}

void prevesk_dataset_data_type::ensure_default_points(point_list& points) const {
  if (!points.empty()) return;
  points.push_back(moment_value_pair_type(moment_type(), 0.0));
  points.push_back(moment_value_pair_type(moment_type::from_date_time(end_date_time()), 0.0));
}

// Edits only empty series, so that the others keep sharing their points with copies.
void prevesk_dataset_data_type::give_default_points() {
  ensure_default_points(print_intervals.points);
  for (std::size_t i = 0; i < time_functions.size(); ++i)
    if (time_functions[i].points.empty()) ensure_default_points(time_functions.edit(i).points);
  for (std::size_t s = 0; s < systems.size(); ++s)
    for (std::size_t i = 0; i < systems[s].loads.size(); ++i)
      if (systems[s].loads[i].points.empty()) ensure_default_points(systems.edit(s).loads.edit(i).points);
}

} // namespace vesk
