#include "editors/system_form.h"

#include <algorithm>

namespace vesk {

namespace {

constexpr const char* format = "SysParamsBasicNumericField";

record_column<system_data_type> factor(std::string header, double system_data_type::*field) {
  return {.header = std::move(header), .type = number_cell({}), .field = field, .format = format};
}

std::vector<record_column<system_data_type>> columns() {
  using system = system_data_type;
  return {
      {.header = "System", .type = text_cell(), .field = &system::description, .tool_tip = description_tip},
      {.header = "Option", .type = combo_cell({"Simulated", "Constant", "Bypassed"}), .field = &system::gsysbypass},
      {.header = "Particulate\nTransport Field",
       .type = combo_cell({"Solids 1", "Solids 2", "Solids 3"}),
       .field = &system::ifield},
      {.header = "Mass\nBalance",
       .type = check_cell(),
       .field = &system::jmass,
       .typed_only = true,
       .tool_tip = "A run reports the mass balance of one system. Click, or press Space, to choose this one."},
      {.header = "Dispersion\nBypass", .type = check_cell(), .field = &system::norsysbypass},
      {.header = "Flow\nBypass", .type = check_cell(), .field = &system::noqsysbypass},
      factor("Density", &system::density),
      factor("Maximum\nConcentration", &system::cmax),
      factor("Boundary\nScale Factor", &system::scalb),
      factor("Boundary\nConversion Factor", &system::convb),
      factor("Loading\nScale Factor", &system::scalw),
      factor("Loading\nConversion Factor", &system::convw),
  };
}

} // namespace

TSystemForm::TSystemForm(editor_host& host)
    : list_form(host, "TSystemForm", "System Data",
                data_set_grid(host, &prevesk_dataset_data_type::systems, columns())) {
  panel().table.OnClick = [this](std::size_t row, std::size_t) { choose_mass_balance_system(row); };
}

// The column behaves like radio buttons: clicking the selected system leaves it selected.
void TSystemForm::choose_mass_balance_system(std::size_t row) {
  shared_list<system_data_type>& systems = host().data_set()->systems;
  const auto has_it = [](const system_data_type& system) { return system.jmass; };
  if (systems[row].jmass && std::ranges::count_if(systems, has_it) == 1) return;
  history_step step = begin_step("Mass balance");
  for (std::size_t i = 0; i < systems.size(); ++i)
    if (systems[i].jmass != (i == row)) systems.edit(i).jmass = i == row;
  step.end();
  panel().table.display_rows();
  refresh_texts();
}

} // namespace vesk
