// TBoundaryForm: the concentrations at the network's edges. The pairs of exchanges and flows determine the boundaries.
#pragma once

#include "editors/tree_series_form.h"

namespace vesk {

class TBoundaryForm final : public tree_series_form {
public:
  explicit TBoundaryForm(editor_host& host)
      : tree_series_form(host, {"TBoundaryForm", "Boundaries", "BoundaryTree", series_kind::boundary,
                                "BoundaryTimeFunctionValueSimpleField", "BoundarySystemNumericField",
                                &system_data_type::scalb, &system_data_type::convb,
                                "Choose a boundary in the tree. Boundaries come from pairs in Exchanges or Flows that "
                                "have a side \"Boundary\".",
                                "No boundaries: give a pair in Exchanges or Flows a side \"Boundary\".", 4,
                                "TimeFunctionLabel"}) {}

  // The one dialog with a small "a" in it.
  std::string_view delete_all_text() const override { return "Delete &all"; }
};

} // namespace vesk
