// Copied cells as a table in HTML.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// `cells`: as TFillCalcTable::do_copy gives them. Numbers, dates (yyyy-mm-dd) and times (HH:mm:ss) carry their values
// in attributes that spreadsheets read whatever the user's decimal sign is: as text, 1.234 is a thousand times as much
// in a German or French spreadsheet.
std::string html_of_cells(std::string_view cells);

} // namespace vesk
