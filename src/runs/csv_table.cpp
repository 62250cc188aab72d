#include "runs/csv_table.h"

#include "platform/counted.h"
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

  [[noreturn]] void fail(const std::string& cause) const { fail_in(line_, cause); }
  [[noreturn]] void fail_in(std::size_t line, const std::string& cause) const {
    throw value_error(file_ + ", line " + std::to_string(line) + ": " + cause);
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

// A name in braces that was split at its comma, such as "{a, b}"; empty: none.
std::string split_name(const std::vector<std::string>& fields) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::size_t brace = fields[i].rfind('{');
    if (brace == std::string::npos || fields[i].find('}', brace) != std::string::npos) continue;
    std::string name = fields[i].substr(brace);
    for (std::size_t k = i + 1; k < fields.size(); ++k) {
      const std::size_t end = fields[k].find_first_of("{}");
      name += ", " + fields[k].substr(0, end == std::string::npos ? end : end + 1);
      if (end == std::string::npos) continue;
      if (fields[k][end] == '}') return name;
      break;
    }
  }
  return {};
}

void require_whole_names(const csv_reader& lines, const std::vector<std::string>& fields) {
  if (const std::string name = split_name(fields); !name.empty())
    lines.fail("the comma in " + name + " separates columns: put quotation marks around the whole path.");
}

void require_fields(const csv_reader& lines, const csv_table& table, const std::vector<std::string>& fields) {
  if (fields.size() == table.header.size()) return;
  require_whole_names(lines, fields);
  if (const std::string fault = separator_fault(table); !fault.empty()) lines.fail_in(1, fault);
  lines.fail("expected " + counted(table.header.size(), "field") + ", found " + std::to_string(fields.size()) + ".");
}

} // namespace

std::string separator_fault(const csv_table& table) {
  const std::size_t separator = table.header.size() == 1 ? table.header[0].find_first_of(";\t") : std::string::npos;
  if (separator == std::string::npos) return {};
  return std::string("expected commas between the columns, found ") +
         (table.header[0][separator] == ';' ? "semicolons" : "tabs") + ". Numbers have a decimal point, as in 0.1.";
}

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
  require_whole_names(lines, table.header);
  for (std::size_t i = 0; i < table.header.size(); ++i)
    if (table.column(table.header[i]) < i) lines.fail("the column " + table.header[i] + " occurs more than once.");
  for (std::vector<std::string> fields; lines.next(fields); table.rows.push_back(fields))
    require_fields(lines, table, fields);
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
