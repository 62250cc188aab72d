#include "query/sources/sheet_source.h"

#include "query/sources/date_text.h"

#include <cmath>

namespace vesk {

double workbook_dates::number(double cell) const {
  constexpr double from_1904_on = 1462;
  if (!std::isfinite(cell)) return cell;
  if (from_1904) return to_milliseconds(cell + from_1904_on);
  return to_milliseconds(cell >= 1 && cell < 60 ? cell + 1 : cell);
}

bool is_date_format(std::string_view format) {
  for (std::size_t i = 0; i < format.size() && format[i] != ';'; ++i) {
    switch (format[i]) {
    case '\\':
    case '_':
    case '*': ++i; break;
    case '"': i = std::min(format.find('"', i + 1), format.size()); break;
    case '[': {
      const std::size_t end = std::min(format.find(']', i), format.size());
      const std::string_view inside = format.substr(i + 1, end - i - 1);
      if (!inside.empty() && inside.find_first_not_of("hHmMsS") == inside.npos) return true;
      i = end;
      break;
    }
    case 'd':
    case 'D':
    case 'm':
    case 'M':
    case 'y':
    case 'Y':
    case 'h':
    case 'H':
    case 's':
    case 'S': return true;
    default: break;
    }
  }
  return false;
}

bool is_date_format(unsigned built_in) {
  return (built_in >= 14 && built_in <= 22) || (built_in >= 27 && built_in <= 36) ||
         (built_in >= 45 && built_in <= 47) || (built_in >= 50 && built_in <= 58);
}

} // namespace vesk
