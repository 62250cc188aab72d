// A grid as comma-separated values.
#pragma once

#include "charts/grid.h"

#include <functional>
#include <string_view>

namespace vesk {

// The headers and all rows, with the exact values of a copy: dates as yyyy-mm-dd, times as HH:mm:ss. UTF-8, lines end
// in "\n", fields are quoted where they must be. A text that a spreadsheet would take for a formula gets an apostrophe
// in front. `write` takes one piece after the other.
void write_csv(const grid& content, const std::function<void(std::string_view)>& write);

} // namespace vesk
