// Puts cells on the clipboard.
#pragma once

#include <string>

namespace vesk {

// `cells`: as TFillCalcTable::do_copy gives them. Other programs find them as text, and as a table in HTML unless there
// are so many that spreadsheets would take minutes to read that.
void copy_cells(const std::string& cells);

} // namespace vesk
