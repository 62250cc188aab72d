// TSystemForm: how the model's systems are simulated, bounded and scaled.
#pragma once

#include "editors/list_form.h"

namespace vesk {

class TSystemForm final : public list_form<system_data_type> {
public:
  explicit TSystemForm(editor_host& host);

private:
  void choose_mass_balance_system(std::size_t row);
};

} // namespace vesk
