// Tool tips with a value's default and range from the catalogue.
#pragma once

#include "charts/cell.h"

#include <string>

namespace vesk {

// "default 0.1, from 0 to 10"; without the range if the catalogue has none.
inline std::string catalogue_tip(double default_value, double minimum, double maximum) {
  const auto exact = [](double value) { return entry_text(number_cell({}), value); };
  std::string tip = "default " + exact(default_value);
  if (minimum < maximum) tip += ", from " + exact(minimum) + " to " + exact(maximum);
  return tip;
}

} // namespace vesk
