#include "charts/csv_text.h"

#include <algorithm>
#include <string>

namespace vesk {

namespace {

constexpr std::size_t piece = std::size_t{1} << 20; // bytes

void append_quoted(std::string& text, std::string_view field) {
  if (field.find_first_of(",\"\r\n") == field.npos) {
    text += field;
    return;
  }
  text += '"';
  for (const char c : field) {
    if (c == '"') text += '"';
    text += c;
  }
  text += '"';
}

// A name such as "=cmd()" would start programs in a spreadsheet. Quotes alone don't help: a quoted formula is still
// one. The reader of tables drops the apostrophe.
void append_text(std::string& text, std::string_view name) {
  const bool like_a_formula = !name.empty() && std::string_view("=+-@\t\r").find(name.front()) != name.npos;
  append_quoted(text, like_a_formula ? "'" + std::string(name) : std::string(name));
}

bool is_text(cell_kind kind) {
  return kind == cell_kind::text || kind == cell_kind::combo;
}

} // namespace

void write_csv(const grid& content, const std::function<void(std::string_view)>& write) {
  const auto columns = content.columns();
  std::string text;
  const auto end_field = [&](std::size_t column) { text += column + 1 == columns.size() ? '\n' : ','; };
  for (std::size_t column = 0; column < columns.size(); ++column) {
    std::string header = columns[column].header;
    std::ranges::replace(header, '\n', ' ');
    append_text(text, header);
    end_field(column);
  }
  for (std::size_t row = 0; row < content.row_count(); ++row) {
    for (std::size_t column = 0; column < columns.size(); ++column) {
      const cell_type& type = columns[column].type;
      if (is_text(type.kind))
        append_text(text, cell_text(type, content.value(row, column)));
      else
        append_clipboard_text(text, type, content.value(row, column));
      end_field(column);
    }
    if (text.size() < piece) continue;
    write(text);
    text.clear();
  }
  write(text);
}

} // namespace vesk
