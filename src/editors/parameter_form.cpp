#include "editors/parameter_form.h"

namespace vesk {

TParameterForm::TParameterForm(editor_host& host)
    : list_form(host, "TParameterForm", "Parameter data",
                data_set_grid(host, &prevesk_dataset_data_type::parameters,
                              {
                                  {.header = "Parameter",
                                   .type = text_cell(),
                                   .field = &parameter_data_type::description,
                                   .tool_tip = description_tip},
                                  {.header = "Used", .type = check_cell(), .field = &parameter_data_type::used},
                                  {.header = "Scale Factor",
                                   .type = number_cell({}),
                                   .field = &parameter_data_type::scale,
                                   .format = "ParameterBasicNumericField"},
                              })) {}

} // namespace vesk
