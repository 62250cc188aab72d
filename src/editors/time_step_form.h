// TTimeStepForm: the time steps of a run, in days.
#pragma once

#include "editors/series_form.h"

namespace vesk {

class TTimeStepForm final : public series_form {
public:
  explicit TTimeStepForm(editor_host& host)
      : series_form(host, "TTimeStepForm", "Time Step", {series_kind::time_steps, 0, 0}, "TimeStepBasicNumericField") {}

  void FormShow() override;

protected:
  void accepted() override;

private:
  bool was_empty_ = false; // when the form was shown
};

} // namespace vesk
