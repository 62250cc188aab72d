#include "dataset/csv_name.h"
#include "shell/handlers/places.h"
#include "shell/handlers/special_handlers.h"
#include "shell/handlers/values.h"

namespace vesk::handlers {

namespace {

// Switches the first `count` fields on and the others off.
template <class Fields>
void use_first(const shell_interface& shell, Fields& fields, std::int32_t count) {
  const std::int64_t last = std::int64_t{count} - shell.index_base;
  for (std::size_t i = 0; i < fields.size(); ++i) fields.edit(i).used = last >= static_cast<std::int64_t>(i);
}

template <auto Member>
void segment_system_value(shell_interface& shell, std::int32_t system_index, std::int32_t segment_index, float& value) {
  const auto at = shell.get_nth_segment_system(segment_index, system_index);
  if (!at) return;
  auto& segments = shell.data_set().segments;
  segment_system_data_record_type record = segments[at->segment].systems[at->item];
  if (shell.is_get) return to_argument(shell, record.*Member, value);
  from_argument(shell, record.*Member, value);
  segments.edit(at->segment).systems.set(at->item, record);
}

} // namespace

// A PUT of 3 reads back as 2: engines rely on it.
void mass_balance_system(shell_interface& shell, std::int32_t& jmass) {
  auto& systems = shell.data_set().systems;
  if (shell.is_get) {
    std::size_t i = 0;
    while (i < systems.size() && !systems[i].jmass) ++i;
    jmass = static_cast<std::int32_t>(i);
    return;
  }
  const std::int64_t chosen = std::int64_t{jmass} - shell.index_base;
  for (std::size_t i = 0; i < systems.size(); ++i) systems.edit(i).jmass = static_cast<std::int64_t>(i) == chosen;
}

void hydrodynamic_file(shell_interface& shell, char* hydrofile) {
  auto& name = shell.data_set().hydrodynamic_file;
  if (shell.is_get) return to_argument(shell, name, hydrofile);
  name = hydrofile;
  shell.job().request_read_hyd_file();
}

void number_of_constants(shell_interface& shell, std::int32_t& numconst) {
  std::int32_t count = 0;
  for (const auto& group : shell.data_set().constant_groups)
    for (const auto& constant : group.constants) count += constant.used ? 1 : 0;
  numconst = count;
}

void number_of_segments(shell_interface& shell, std::int32_t& numseg) {
  auto& data = shell.data_set();
  if (shell.is_get) {
    numseg = static_cast<std::int32_t>(data.segments.size());
  } else if (const auto count = shell.list_size(numseg, 0)) {
    data.apply_thread_defaults(); // on the thread from which the engine calls
    data.resize_segments(*count);
  }
}

void number_of_exchange_fields(shell_interface& shell, std::int32_t& nrfld) {
  auto& fields = shell.data_set().exchange_fields;
  if (!shell.is_get) return use_first(shell, fields, nrfld);
  std::int32_t count = 0;
  for (const auto& field : fields) count += field.used ? 1 : 0;
  nrfld = count;
}

void number_of_flow_fields(shell_interface& shell, std::int32_t& nfield) {
  auto& fields = shell.data_set().flow_fields;
  if (!shell.is_get) return use_first(shell, fields, nfield);
  nfield = static_cast<std::int32_t>(fields.size());
}

void constant_group_description(shell_interface& shell, std::int32_t& constant_index, char* description) {
  const constant_data_type* found = place::constant::find<false>(shell, constant_index);
  const auto& groups = shell.data_set().constant_groups;
  if (!found || found->group < 0 || static_cast<std::size_t>(found->group) >= groups.size()) return;
  to_argument(shell, groups[static_cast<std::size_t>(found->group)].description, description);
}

void num_segment_parameters(shell_interface& shell, std::int32_t& /*segment_index*/, std::int32_t& nopam) {
  std::int32_t count = 0;
  for (const auto& parameter : shell.data_set().parameters) count += parameter.used ? 1 : 0;
  nopam = count;
}

void seg_param_isc(shell_interface& shell, std::int32_t& /*segment_index*/, std::int32_t& parameter_index,
                   std::int32_t& iscparam) {
  if (const auto* found = place::parameter::find<false>(shell, parameter_index))
    to_argument(shell, found->isc, iscparam);
}

void seg_param_value(shell_interface& shell, std::int32_t& segment_index, std::int32_t& number, float& constparam) {
  const auto at = shell.is_get ? shell.get_nth_segment_parameter(segment_index, number)
                               : shell.get_segment_parameter_by_isc(segment_index, number);
  if (!at) return;
  auto& segments = shell.data_set().segments;
  segment_parameter_data_record_type record = segments[at->segment].parameters[at->item];
  if (shell.is_get) return to_argument(shell, record.value, constparam);
  from_argument(shell, record.value, constparam);
  segments.edit(at->segment).parameters.set(at->item, record);
}

// The engine distinguishes only bypassed or not; the data set has a third state in between.
void global_system_bypass(shell_interface& shell, std::int32_t& system_index, std::int32_t& gsysbypass) {
  if (shell.is_get) {
    if (const auto* system = place::nth_system::find<false>(shell, system_index))
      gsysbypass = system->gsysbypass != system_simulated ? 1 : 0;
  } else if (auto* system = place::nth_system::find<true>(shell, system_index)) {
    system->gsysbypass = gsysbypass != 0 ? system_bypassed : system_simulated;
  }
}

void initial_concentration(shell_interface& shell, std::int32_t& system_index, std::int32_t& segment_index,
                           float& initc) {
  segment_system_value<&segment_system_data_record_type::initial_concentration>(shell, system_index, segment_index,
                                                                                initc);
}

void fraction_dissolved(shell_interface& shell, std::int32_t& system_index, std::int32_t& segment_index, float& fdiss) {
  segment_system_value<&segment_system_data_record_type::fraction_dissolved>(shell, system_index, segment_index, fdiss);
}

void find_boundaries(shell_interface& shell) {
  shell.log("Starting boundary search...");
  shell.data_set().apply_thread_defaults();
  shell.data_set().find_boundaries();
  shell.log("Boundary search complete.");
}

void csv_output_file_name(shell_interface& shell, std::int32_t& number, char* csv_file_name) {
  if (shell.is_get) {
    if (const auto* output = place::csv_output_parameter::find<false>(shell, number))
      to_argument(shell, output->csv_filename, csv_file_name);
  } else if (const std::string fault = csv_name_fault(csv_file_name); !fault.empty()) {
    shell.warn(fault);
  } else if (auto* output = place::csv_output_parameter::find<true>(shell, number)) {
    from_argument(shell, output->csv_filename, csv_file_name);
  }
}

void project_file(shell_interface& shell, std::int32_t& index, char* filename) {
  const auto& files = shell.data_set().project_files;
  if (const auto i = shell.position(index, files.size(), 0)) to_argument(shell, files[*i], filename);
}

// The data set for the new model is made separately; if the catalogue fails the old one is kept.
void model_type(shell_interface& shell, std::int32_t& model_type) {
  auto& data = shell.data_set();
  if (shell.is_get) return to_argument(shell, data.model_type, model_type);
  if (data.model_type == static_cast<std::uint32_t>(model_type)) return;
  prevesk_dataset_data_type changed = data;
  changed.model_type = static_cast<std::uint32_t>(model_type);
  changed.refresh_from_catalogue(false);
  data = std::move(changed);
}

} // namespace vesk::handlers
