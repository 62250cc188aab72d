#include "charts/cells_html.h"

#include "charts/pasted_text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>

namespace vesk {

namespace {

struct spreadsheet_value {
  double value;
  const char* calc_format; // of sdnum, after the language
  const char* excel_format;
};

std::optional<double> number_of(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return {};
  return value;
}

// Whole numbers between separators, as in "2012-10-01"; no fewer digits, no more.
template <std::size_t count>
std::optional<std::array<int, count>> parts_of(std::string_view text, const int (&digits)[count], char separator) {
  std::array<int, count> parts{};
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0 && (text.empty() || text.front() != separator)) return {};
    if (i > 0) text.remove_prefix(1);
    const auto size = static_cast<std::size_t>(digits[i]);
    if (text.size() < size || text.find_first_not_of("0123456789") < size) return {};
    std::from_chars(text.data(), text.data() + size, parts[i]);
    text.remove_prefix(size);
  }
  return text.empty() ? std::optional(parts) : std::nullopt;
}

std::optional<spreadsheet_value> value_of(std::string_view text) {
  if (const auto number = number_of(text)) return spreadsheet_value{*number, "", nullptr};
  if (const auto date = parts_of(text, {4, 2, 2}, '-')) {
    using namespace std::chrono;
    constexpr sys_days day_0 = year(1899) / December / 30;
    const auto [y, m, d] = *date;
    const year_month_day day = year(y) / m / d;
    if (!day.ok() || sys_days(day) < day_0) return {}; // Excel has no earlier dates
    return spreadsheet_value{static_cast<double>((sys_days(day) - day_0).count()), "1033;YYYY-MM-DD",
                             R"(yyyy\-mm\-dd)"};
  }
  if (const auto time = parts_of(text, {2, 2, 2}, ':')) {
    const auto [hour, minute, second] = *time;
    return spreadsheet_value{(hour * 3600 + minute * 60 + second) / 86400.0, "1033;HH:MM:SS", R"(hh\:mm\:ss)"};
  }
  return {};
}

void append_escaped(std::string& html, std::string_view text) {
  for (const char c : text) {
    switch (c) {
    case '&': html += "&amp;"; break;
    case '<': html += "&lt;"; break;
    case '>': html += "&gt;"; break;
    case '\n': html += "<br>"; break;
    default: html += c;
    }
  }
}

void append_cell(std::string& html, std::string_view text) {
  html += "<td";
  if (const auto found = value_of(text)) {
    char digits[32];
    const std::string value(digits, std::to_chars(digits, digits + sizeof digits, found->value).ptr);
    html += " sdval=\"" + value + "\" sdnum=\"1033;" + found->calc_format + "\" x:num=\"" + value + "\"";
    if (found->excel_format) html += std::string(" style='mso-number-format:\"") + found->excel_format + "\"'";
  }
  html += ">";
  append_escaped(html, text);
  html += "</td>";
}

} // namespace

std::string html_of_cells(std::string_view cells) {
  const pasted_text lines(cells);
  // The namespace is that of Excel's attributes.
  std::string html = "<html xmlns:x=\"urn:schemas-microsoft-com:office:excel\"><head><meta charset=\"utf-8\"></head>"
                     "<body><table>\n";
  for (std::size_t line = 0; line < lines.line_count(); ++line) {
    html += "<tr>";
    for (std::size_t field = 0; field < lines.field_count(line); ++field) append_cell(html, lines.field(line, field));
    html += "</tr>\n";
  }
  return html + "</table></body></html>\n";
}

} // namespace vesk
