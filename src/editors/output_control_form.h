// TOutputControlForm: which output variables the model writes.
#pragma once

#include "editors/list_form.h"

namespace vesk {

class TOutputControlForm final : public list_form<output_control_type> {
public:
  explicit TOutputControlForm(editor_host& host);
  void FormShow() override; // starts at the first row
};

} // namespace vesk
