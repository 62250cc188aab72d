// TParameterForm: switches and scale factors of the model's parameters.
#pragma once

#include "editors/list_form.h"

namespace vesk {

class TParameterForm final : public list_form<parameter_data_type> {
public:
  explicit TParameterForm(editor_host& host);
};

} // namespace vesk
