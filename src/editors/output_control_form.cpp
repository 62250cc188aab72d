#include "editors/output_control_form.h"

namespace vesk {

TOutputControlForm::TOutputControlForm(editor_host& host)
    : list_form(host, "TOutputControlForm", "Output Control",
                data_set_grid(host, &prevesk_dataset_data_type::output_controls,
                              {
                                  {.header = "Description",
                                   .type = text_cell(),
                                   .field = &output_control_type::description,
                                   .tool_tip = description_tip},
                                  {.header = "Units",
                                   .type = text_cell(),
                                   .field = &output_control_type::units,
                                   .tool_tip = description_tip},
                                  {.header = "Output", .type = check_cell(), .field = &output_control_type::enabled},
                                  {.header = "CSV", .type = check_cell(), .field = &output_control_type::csv_enabled},
                              }),
                0) {}

void TOutputControlForm::FormShow() {
  list_form::FormShow();
  panel().table.set_active(0, panel().table.active_column());
}

} // namespace vesk
