#include "editors/series_grid.h"

#include "charts/numeric_picture.h"
#include "dataset/findings.h"
#include "platform/counted.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vesk {

namespace {

bool holds_intervals(const std::optional<series_ref>& ref) {
  return ref && (ref->kind == series_kind::print_intervals || ref->kind == series_kind::time_steps);
}

// Minimum, sum and maximum of the finite values of rows.
struct value_range {
  std::size_t count = 0;
  double minimum = 0, maximum = 0, sum = 0;

  void add(double value) {
    if (!std::isfinite(value)) return;
    minimum = count == 0 ? value : std::min(minimum, value);
    maximum = count == 0 ? value : std::max(maximum, value);
    sum += value;
    ++count;
  }
  double mean() const { return sum / static_cast<double>(count); }
};

std::string short_number(double value) {
  return number_in_picture(value, "EEEEEE");
}

} // namespace

std::string day_text(const moment_type& moment) {
  constexpr std::array<const char*, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const calendar_date date = date_of(moment.date);
  return std::to_string(date.day) + " " + months[date.month - 1] + " " + std::to_string(date.year);
}

series_grid::series_grid(editor_host& host, std::string format) : host_(host), format_(std::move(format)) {
  columns_ = {{"Date", {cell_kind::date}}, {"Time", {cell_kind::time}}, {"Value", number_cell({})}};
}

void series_grid::take_format() {
  columns_[value_column].type.picture = host_.number_format(format_);
  columns_[value_column].type.is_duration = holds_intervals(ref_);
}

const stored_series* series_grid::series() const {
  return ref_ && host_.data_set() ? find_series(*host_.data_set(), *ref_) : nullptr;
}

point_list& series_grid::edit_points() {
  return edit_series(*host_.data_set(), *ref_).points;
}

bool series_grid::is_deferred() const {
  const stored_series* shown = series();
  return shown && shown->query->deferred;
}

std::size_t series_grid::row_count() const {
  const stored_series* shown = series();
  return shown ? shown->points.size() : 0;
}

cell_value series_grid::value(std::size_t row, std::size_t column) const {
  const stored_series* shown = series();
  if (!shown || row >= shown->points.size()) return {};
  const moment_value_pair_type& point = shown->points[row];
  return column == date_column   ? static_cast<double>(point.date)
         : column == time_column ? static_cast<double>(point.time)
                                 : point.value;
}

void series_grid::set_value(std::size_t row, std::size_t column, const cell_value& value) {
  moment_value_pair_type& point = edit_points().edit(row);
  const double number = std::get<double>(value);
  if (column == date_column)
    point.date = static_cast<std::int32_t>(number);
  else if (column == time_column)
    point.time = static_cast<std::int32_t>(number);
  else
    point.value = number;
}

cell_mark series_grid::mark(std::size_t row, std::size_t column) const {
  const stored_series* shown = series();
  if (!shown) return {};
  point_finding finding = check_point(*shown, *ref_, row);
  const std::size_t marked = finding.about == point_finding::part::value ? value_column : date_column;
  return column == marked ? cell_mark{std::move(finding.sentence)} : cell_mark{};
}

std::string series_grid::tool_tip(std::size_t, std::size_t column) const {
  if (column != value_column || !holds_intervals(ref_)) return {};
  return "In days. \"30 s\", \"5 min\", \"6 h\" and \"1 d\" are accepted as well.";
}

void series_grid::insert_row(std::size_t row) {
  edit_points().insert(row, moment_value_pair_type{});
}

void series_grid::erase_rows(std::size_t first, std::size_t count) {
  if (count > 0) edit_points().erase(first, count);
}

void series_grid::resize(std::size_t count) {
  edit_points().resize(count, moment_value_pair_type{});
}

std::size_t series_grid::sort(std::size_t row) {
  const stored_series* shown = series();
  if (!shown || std::is_sorted(shown->points.begin(), shown->points.end())) return row;
  return sort_by_moment(edit_points(), row);
}

std::string series_grid::summary(std::optional<cell_range> selection) const {
  const stored_series* shown = series();
  if (!shown) return {};
  const point_list& points = shown->points;
  if (points.empty()) return "No points yet. Insert adds one; Paste adds rows of date, time and value.";
  const bool part = selection && selection->contains(selection->top, value_column) && selection->rows() > 1 &&
                    selection->bottom < points.size();
  value_range range;
  const std::size_t first = part ? selection->top : 0, last = part ? selection->bottom : points.size() - 1;
  for (std::size_t row = first; row <= last; ++row) range.add(points[row].value);
  if (part) {
    std::string text = counted(selection->rows(), "value") + " selected";
    if (range.count > 0) text += ", sum " + short_number(range.sum) + ", mean " + short_number(range.mean());
    return text;
  }
  const auto [earliest, latest] = std::minmax_element(points.begin(), points.end());
  std::string text = counted(points.size(), "point") + ", " + day_text(*earliest) + " to " + day_text(*latest);
  if (range.count > 0)
    text += ", minimum " + short_number(range.minimum) + ", mean " + short_number(range.mean()) + ", maximum " +
            short_number(range.maximum);
  if (const std::size_t outside = points_outside_run(*host_.data_set(), points); outside > 0)
    text += "; " + std::to_string(outside) + " of " + counted(points.size(), "point") +
            (outside == 1 ? " is" : " are") + " outside the run";
  return text;
}

} // namespace vesk
