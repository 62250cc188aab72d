#include "runs/csv_table.h"

#include "platform/file_io.h"
#include "runs/value_path.h"

#include <algorithm>

namespace vesk {

namespace {

std::string_view without_blanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

class csv_reader {
public:
  csv_reader(std::string_view text, const std::string& file) : text_(text), file_(file) {}

  // Reads the next non-empty line; false at the end.
  bool next(std::vector<std::string>& fields) {
    do {
      if (text_.empty()) return false;
      fields.clear();
      line_ = next_line_;
      while (take_field(fields)) {
      }
    } while (fields.size() == 1 && fields[0].empty());
    return true;
  }

  [[noreturn]] void fail(const std::string& cause) const {
    throw value_error(file_ + ", line " + std::to_string(line_) + ": " + cause);
  }

private:
  // True if another field follows on the line.
  bool take_field(std::vector<std::string>& fields) {
    const std::size_t begin = std::min(text_.find_first_not_of(" \t"), text_.size());
    if (begin < text_.size() && text_[begin] == '"') {
      text_.remove_prefix(begin + 1);
      fields.push_back(quoted_text());
      const std::size_t rest = std::min(text_.find_first_of(",\r\n"), text_.size());
      if (!without_blanks(text_.substr(0, rest)).empty()) fail("expected a comma after a quotation mark.");
      text_.remove_prefix(rest);
    } else {
      const std::size_t end = std::min(text_.find_first_of(",\r\n"), text_.size());
      const std::string_view field = without_blanks(text_.substr(0, end));
      if (field.find('"') != field.npos) fail("a quotation mark inside a field that is not quoted.");
      fields.emplace_back(field);
      text_.remove_prefix(end);
    }
    if (text_.starts_with(',')) {
      text_.remove_prefix(1);
      return true;
    }
    if (text_.starts_with('\r')) text_.remove_prefix(1);
    if (text_.starts_with('\n')) text_.remove_prefix(1);
    ++next_line_;
    return false;
  }

  std::string quoted_text() {
    std::string field;
    for (;;) {
      const std::size_t mark = text_.find('"');
      if (mark == text_.npos) fail("a quotation mark is not closed.");
      field += text_.substr(0, mark);
      text_.remove_prefix(mark + 1);
      if (!text_.starts_with('"')) break;
      field += '"';
      text_.remove_prefix(1);
    }
    next_line_ += static_cast<std::size_t>(std::ranges::count(field, '\n'));
    return field;
  }

  std::string_view text_; // not yet read
  const std::string& file_;
  std::size_t line_ = 0, next_line_ = 1;
};

} // namespace

std::size_t csv_table::column(std::string_view name) const {
  return static_cast<std::size_t>(std::ranges::find(header, name) - header.begin());
}

csv_table read_csv_table(const std::filesystem::path& file) {
  const std::string text = read_to_end(open_for_reading(file).get(), file.native());
  if (text.find('\0') != text.npos)
    throw value_error(file.native() + " has null characters, as in UTF-16; save it as CSV in UTF-8.");
  std::string_view rest = text;
  if (rest.starts_with("\xef\xbb\xbf")) rest.remove_prefix(3);
  csv_table table{.file = file.native(), .header = {}, .rows = {}};
  csv_reader lines(rest, table.file);
  if (!lines.next(table.header))
    throw value_error(table.file + " is empty; expected a line with the names of columns.");
  for (std::size_t i = 0; i < table.header.size(); ++i)
    if (table.column(table.header[i]) < i) lines.fail("the column " + table.header[i] + " occurs more than once.");
  for (std::vector<std::string> fields; lines.next(fields); table.rows.push_back(fields))
    if (fields.size() != table.header.size())
      lines.fail("expected " + std::to_string(table.header.size()) + " fields, found " + std::to_string(fields.size()) +
                 ".");
  return table;
}

std::string csv_field(const std::string& text) {
  const bool has_outer_blanks = without_blanks(text).size() < text.size(); // which the reader would drop
  if (!has_outer_blanks && text.find_first_of(",\"\r\n") == text.npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

} // namespace vesk
