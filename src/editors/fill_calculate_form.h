// TFillCalculateForm: asks for the expression of Fill/Calc. One for the whole program.
#pragma once

#include "editors/form.h"

namespace vesk {

class TFillCalculateForm final : public form {
public:
  static constexpr std::string_view label = "Expression:";
  static constexpr std::string_view help =
      "x: current value; row: row number; i: position in the selection; n: size of the selection. Example: x * 1.05";

  std::string_view class_name() const override { return "TFillCalculateForm"; }
  std::string caption() const override { return "Fill/Calculate"; }

  std::string FillCalculateEdit; // kept between uses
};

} // namespace vesk
