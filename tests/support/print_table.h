// A table's cells as shown, for comparison with expected lines.
#pragma once

#include "charts/fill_calc_table.h"

#include <string>

namespace vesk {

// "a|b|c" a row.
inline std::string print(const TFillCalcTable& table) {
  std::string text;
  for (std::size_t row = 0; row < table.row_limit(); ++row) {
    for (std::size_t column = 0; column < table.content().columns().size(); ++column)
      text += (column == 0 ? "" : "|") + table.text(row, column);
    text += '\n';
  }
  return text;
}

} // namespace vesk
