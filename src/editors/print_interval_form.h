// TPrintIntervalForm: how often a run writes its results, in days between two prints.
#pragma once

#include "editors/series_form.h"

namespace vesk {

class TPrintIntervalForm final : public series_form {
public:
  explicit TPrintIntervalForm(editor_host& host)
      : series_form(host, "TPrintIntervalForm", "Print Interval", {series_kind::print_intervals, 0, 0},
                    "PrintIntervalBasicNumericField") {}
};

} // namespace vesk
