// Fills a data set's model lists from the catalogue, and decides which of the user's values are kept.
//
// Items are matched by ISC number, never by position: for each new item the old ones are searched in order and the last
// match wins. New items without a match keep the defaults; old ones without a match are dropped.
#include "dataset/dataset.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <vector>

namespace vesk {

namespace {

const catalogue_model unknown_model{0, "UNKNOWN MODEL", "UNKNOWN.DLL", {}, {}, {}, {}, {}, {}};

// For each new item, the position of its partner: the last old item with the same ISC number.
using partner_list = std::vector<std::optional<std::size_t>>;

// Partners among the first `reach` old items.
template <class List>
partner_list find_partners(const List& fresh, const List& old, std::size_t reach) {
  std::unordered_map<std::uint32_t, std::size_t> last;
  for (std::size_t i = 0; i < std::min(reach, old.size()); ++i) last[old[i].isc] = i;
  partner_list result(fresh.size());
  for (std::size_t i = 0; i < fresh.size(); ++i)
    if (const auto found = last.find(fresh[i].isc); found != last.end()) result[i] = found->second;
  return result;
}

template <class List>
partner_list find_partners(const List& fresh, const List& old) {
  return find_partners(fresh, old, old.size());
}

bool is_identity(const partner_list& partners) {
  for (std::size_t i = 0; i < partners.size(); ++i)
    if (partners[i] != i) return false;
  return true;
}

// A segment's list rearranged: each item comes from its partner's position, or has defaults if it has no partner.
template <class Items>
Items carried_over(const Items& old, const Items& defaults, const partner_list& partners) {
  Items result = defaults;
  for (std::size_t i = 0; i < partners.size(); ++i)
    if (partners[i]) result.set(i, old[*partners[i]]);
  return result;
}

// Rebuilds one of the two lists of every segment after the model's list `old` has become `fresh`. Partners are sought
// up to the length of the segment's own list. Segments that do not change keep sharing their memory. All but
// those of `which` have lists like `old`.
template <class Items, class List>
void rebuild_segment_lists(shared_list<segment_data_type>& segments, Items segment_data_type::*list, const List& fresh,
                           const List& old, segment_range which) {
  Items defaults;
  defaults.resize(fresh.size());
  if (old.size() != fresh.size() || !is_identity(find_partners(fresh, old))) which = {};
  std::optional<std::size_t> reach; // of `partners`; almost always the same for all segments
  partner_list partners;
  bool same = false, nothing_kept = false;
  for (std::size_t i = which.first; i < std::min(which.end, segments.size()); ++i) {
    const Items& items = segments[i].*list;
    if (reach != items.size()) {
      reach = items.size();
      partners = find_partners(fresh, old, *reach);
      same = *reach == fresh.size() && is_identity(partners);
      nothing_kept = std::all_of(partners.begin(), partners.end(), [](const auto& p) { return !p; });
    }
    if (same) continue;
    Items rebuilt = nothing_kept ? defaults : carried_over(items, defaults, partners);
    segments.edit(i).*list = std::move(rebuilt);
  }
}

constant_data_type make_constant(const catalogue_constant& row) {
  constant_data_type constant;
  constant.isc = row.isc;
  constant.minimum = row.minimum;
  constant.maximum = row.maximum;
  constant.default_value = row.default_value;
  constant.description = row.description;
  return constant;
}

// Sets a list to `count` new records; catalogue rows fill as many as there are.
template <class Record, class Row, class Fill>
void rebuild(shared_list<Record>& list, std::size_t count, const std::vector<Row>& rows, Fill fill) {
  list.clear();
  list.resize(count);
  for (std::size_t i = 0; i < std::min(count, rows.size()); ++i) fill(list.edit(i), rows[i]);
}

} // namespace

const catalogue_model& prevesk_dataset_data_type::model() const {
  if (!catalogue_.pointer) throw catalogue_exception("The data set has no model catalogue.");
  const catalogue_model* found = catalogue_.pointer->find_model(model_type);
  return found ? *found : unknown_model;
}

void prevesk_dataset_data_type::refresh_from_catalogue(bool merge) {
  const catalogue_model& rows = model();
  apply_thread_defaults();
  library = rows.library;
  model_name = rows.model_name;
  fill_parameters(rows.parameters.size(), merge);
  fill_systems(rows.systems.size(), merge);
  fill_constant_groups(rows.constant_groups.size(), merge);
  fill_time_functions(rows.time_functions.size(), merge);
  fill_output_controls(rows.outputs.size(), merge);
}

void prevesk_dataset_data_type::fill_parameters(std::size_t count, bool merge, segment_range which) {
  const auto old = merge ? parameters : shared_list<parameter_data_type>();
  rebuild(parameters, count, model().parameters, [](parameter_data_type& parameter, const catalogue_parameter& row) {
    parameter.isc = row.isc;
    parameter.minimum = row.minimum;
    parameter.maximum = row.maximum;
    parameter.default_value = row.default_value;
    parameter.description = row.description;
  });
  const partner_list partners = find_partners(parameters, old);
  for (std::size_t i = 0; i < partners.size(); ++i) {
    if (!partners[i]) continue;
    parameters.edit(i).used = old[*partners[i]].used;
    parameters.edit(i).scale = old[*partners[i]].scale;
  }
  rebuild_segment_lists(segments, &segment_data_type::parameters, parameters, old, which);
}

void prevesk_dataset_data_type::fill_systems(std::size_t count, bool merge, segment_range which) {
  const auto old = merge ? systems : shared_list<system_data_type>();
  rebuild(systems, count, model().systems, [](system_data_type& system, const catalogue_system& row) {
    system.isc = row.model_system_id;
    system.description = row.description;
  });
  const partner_list partners = find_partners(systems, old);
  for (std::size_t i = 0; i < partners.size(); ++i) {
    if (!partners[i]) continue;
    const short_text catalogue_name = systems[i].description;
    system_data_type& system = systems.edit(i);
    system = old[*partners[i]]; // everything but the name is the user's
    system.description = catalogue_name;
  }
  rebuild_segment_lists(segments, &segment_data_type::systems, systems, old, which);
}

void prevesk_dataset_data_type::fill_constant_groups(std::size_t count, bool merge) {
  shared_list<constant_data_type> old; // of all groups: a constant may have moved to another group
  if (merge)
    for (const auto& group : constant_groups)
      for (const auto& constant : group.constants) old.push_back(constant);

  rebuild(constant_groups, count, model().constant_groups,
          [this](constant_group_data_type& group, const catalogue_constant_group& row) {
            group.group_id = row.group_id;
            group.description = row.description;
            fill_constants_of_group(group, count_constants_in_group(group));
          });
  for (std::size_t g = 0; g < constant_groups.size(); ++g) {
    auto& constants = constant_groups.edit(g).constants;
    const partner_list partners = find_partners(constants, old);
    for (std::size_t i = 0; i < constants.size(); ++i) {
      constant_data_type& constant = constants.edit(i);
      constant.group = static_cast<std::int32_t>(g);
      if (!partners[i]) continue;
      constant.used = old[*partners[i]].used;
      constant.value = old[*partners[i]].value;
    }
  }
}

std::size_t prevesk_dataset_data_type::count_constants_in_group(const constant_group_data_type& group) const {
  for (const auto& row : model().constant_groups)
    if (row.group_id == group.group_id) return row.constants.size();
  return 0;
}

void prevesk_dataset_data_type::fill_constants_of_group(constant_group_data_type& group, std::size_t count) const {
  group.constants.clear();
  group.constants.resize(count);
  for (const auto& row : model().constant_groups) {
    if (row.group_id != group.group_id) continue;
    for (std::size_t i = 0; i < std::min(count, row.constants.size()); ++i)
      group.constants.edit(i) = make_constant(row.constants[i]);
    return;
  }
}

void prevesk_dataset_data_type::fill_time_functions(std::size_t count, bool merge) {
  const auto old = time_functions;
  rebuild(time_functions, count, model().time_functions,
          [](time_function_data_type& function, const catalogue_time_function& row) {
            function.isc = row.isc;
            function.description = row.description;
          });
  if (!merge) return;
  const partner_list partners = find_partners(time_functions, old);
  for (std::size_t i = 0; i < partners.size(); ++i) {
    if (!partners[i]) continue;
    const time_function_data_type& from = old[*partners[i]];
    time_function_data_type& to = time_functions.edit(i);
    to.used = from.used;
    to.points = from.points;
    to.query = from.query;
    to.interpolation_type = from.interpolation_type;
  }
}

void prevesk_dataset_data_type::fill_output_controls(std::size_t count, bool merge) {
  const auto old = output_controls;
  rebuild(output_controls, count, model().outputs, [](output_control_type& output, const catalogue_output& row) {
    output.isc = row.isc;
    output.description = row.description;
    output.short_description = row.short_desc;
    output.units = row.units;
    output.csv_filename = row.csv_filename;
  });
  if (!merge) return;
  const partner_list partners = find_partners(output_controls, old);
  for (std::size_t i = 0; i < partners.size(); ++i) {
    if (!partners[i]) continue;
    output_controls.edit(i).enabled = old[*partners[i]].enabled;
    output_controls.edit(i).csv_enabled = old[*partners[i]].csv_enabled;
  }
}

} // namespace vesk
