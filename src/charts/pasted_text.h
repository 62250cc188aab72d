// Splits the clipboard's text into lines of fields.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// Fields are separated by tabs; lines end with "\n" or "\r\n", which is optional after the last one. Spreadsheets put a
// field with a tab, a quote or a line end in double quotes: these are removed, and two quotes inside become one.
class pasted_text {
public:
  explicit pasted_text(std::string_view text);

  std::size_t line_count() const { return ends_.size(); }
  std::size_t field_count(std::size_t line) const { return ends_[line] - first_field(line); }
  std::string_view field(std::size_t line, std::size_t field) const { return fields_[first_field(line) + field]; }

private:
  std::size_t first_field(std::size_t line) const { return line == 0 ? 0 : ends_[line - 1]; }

  std::vector<std::string_view> fields_; // of all lines; into the caller's text, or into unquoted_
  std::vector<std::size_t> ends_;        // of each line, in fields_
  std::vector<std::unique_ptr<std::string>> unquoted_;
};

} // namespace vesk
