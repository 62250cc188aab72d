// Names and texts inside SQL.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// `text` between two marks, which are doubled inside it: '"' makes a name, '\'' a text.
inline std::string sql_quoted(std::string_view text, char mark = '"') {
  std::string result(1, mark);
  for (const char c : text) {
    if (c == mark) result += c;
    result += c;
  }
  return result + mark;
}

} // namespace vesk
