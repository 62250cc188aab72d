// The clipboard's text as lines of fields.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

// Tabs separate fields; a line ends with "\n" or "\r\n", and the last one need not. A field in double quotes, as
// spreadsheets write one that holds a tab, a quote or a line end, is taken without them, and two quotes in it are one.
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
