#include "charts/graph_form.h"

#include "dataset/moment.h"
#include "platform/counted.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace vesk {

namespace {

constexpr double room_above_and_below = 0.05;

constexpr std::array<const char*, 12> month_names = {"January",   "February", "March",    "April",
                                                     "May",       "June",     "July",     "August",
                                                     "September", "October",  "November", "December"};

bool is_drawn(double y) {
  return std::isfinite(y) && std::abs(y) < hole_value;
}

void sort_points(general_graph_data& data) {
  std::vector<std::size_t> order(data.x.size());
  std::iota(order.begin(), order.end(), 0U);
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return data.x[i]; });
  const auto reordered = [&](const std::vector<double>& values) {
    std::vector<double> result(values.size());
    std::ranges::transform(order, result.begin(), [&](std::size_t i) { return values[i]; });
    return result;
  };
  data.x = reordered(data.x);
  data.y = reordered(data.y);
  data.rows = std::move(order);
}

calendar_date date_at(double days) {
  return date_of(moment_type::from_date_time(days + days_to_1970).date);
}

} // namespace

void TGraphForm::add_series(std::unique_ptr<general_graph_data> data) {
  std::vector<std::unique_ptr<general_graph_data>> one;
  one.push_back(std::move(data));
  add_series(std::move(one));
}

void TGraphForm::add_series(std::vector<std::unique_ptr<general_graph_data>> all) {
  for (auto& data : all) {
    if (data->not_a_date_axis == 1) date_axis_ = false;
    if (!std::ranges::is_sorted(data->x)) {
      was_unsorted_ = true;
      sort_points(*data);
    }
    series_.push_back(std::move(data));
  }
  find_data_bounds();
}

bool TGraphForm::has_points() const {
  return std::ranges::any_of(series_, [](const auto& one) { return !one->x.empty(); });
}

void TGraphForm::set_titles(std::string x_title, std::string y_title) {
  x_title_ = std::move(x_title);
  y_title_ = std::move(y_title);
}

void TGraphForm::set_data_range(double begin, double end) {
  data_begin_ = begin;
  data_end_ = end;
  for (double_sextuple* it : {&default_bounds_, &bounds_}) {
    it->x_minimum = begin == end ? begin - 1 : begin;
    it->x_maximum = begin == end ? end + 1 : end;
  }
}

double TGraphForm::x_at(double pixel) const {
  const double part = std::clamp((pixel - plot_.left) / (plot_.right - plot_.left), 0.0, 1.0);
  return value_at(part, bounds_.x_minimum, bounds_.x_maximum);
}

void TGraphForm::replace_series(std::unique_ptr<general_graph_data> data) {
  const double_sextuple seen = bounds_, all_before = default_bounds_;
  if (!data || series_.empty() || series_.front()->label != data->label) zoom_stack_.clear();
  series_.clear();
  was_unsorted_ = false;
  if (data)
    add_series(std::move(data));
  else
    find_data_bounds();
  if (zoom_stack_.empty()) return;
  if (zoom_stack_.front() == all_before) zoom_stack_.front() = default_bounds_;
  bounds_ = seen;
}

// From the first to the last date and time, and from the smallest to the largest value with a margin. A single point,
// or equal values, get one day or one unit around them.
void TGraphForm::find_data_bounds() {
  double low = std::numeric_limits<double>::infinity(), high = -low;
  data_begin_ = low;
  data_end_ = high;
  for (const auto& one : series_) {
    if (one->x.empty()) continue;
    data_begin_ = std::min(data_begin_, one->x.front());
    data_end_ = std::max(data_end_, one->x.back());
    if (one->is_hidden()) continue;
    for (const double y : one->y) {
      if (!is_drawn(y)) continue;
      low = std::min(low, y);
      high = std::max(high, y);
    }
  }
  if (data_begin_ > data_end_) data_begin_ = data_end_ = 0;
  if (low > high) low = high = 0;
  double_sextuple all;
  all.x_minimum = data_begin_ == data_end_ ? data_begin_ - 1 : data_begin_;
  all.x_maximum = data_begin_ == data_end_ ? data_end_ + 1 : data_end_;
  // Computed separately, since the difference of two finite values may be infinite.
  const double room = low == high ? 1 : high * room_above_and_below - low * room_above_and_below;
  all.first_minimum = all.second_minimum = low - room;
  all.first_maximum = all.second_maximum = high + room;
  default_bounds_ = bounds_ = all;
}

TGraphForm::look TGraphForm::present_look() const {
  if (monochrome_) return {{"#FFFFFF", "#FFFFFF", "#FFFFFF"}};
  return {{"#AABBCC", "#BBCCDD", "#DDDDEE"}};
}

// Title.

std::string TGraphForm::header() const {
  if (!date_axis_ || series_.empty()) return title_;
  return title_.empty() ? date_text() : title_ + "  - " + date_text();
}

// More detail as the view narrows. For a single day the day's number is before the year.
std::string TGraphForm::date_text() const {
  const calendar_date from = date_at(bounds_.x_minimum), to = date_at(bounds_.x_maximum);
  const std::string month = month_names[from.month - 1], year = std::to_string(from.year);
  if (from.year != to.year) return year + " through " + std::to_string(to.year);
  if (from.month != to.month) return month + " through " + month_names[to.month - 1] + ", " + year;
  if (from.day != to.day) return month + " " + year;
  return month + " " + std::to_string(from.day) + " " + year;
}

std::string TGraphForm::summary() const {
  if (series_.empty()) return "The chart has no series.";
  std::size_t points = 0;
  std::string names;
  for (const auto& one : series_) {
    points += one->x.size();
    names += (names.empty() ? "" : ", ") + one->label;
  }
  std::string text = names + ": " + counted(points, "point");
  if (date_axis_) text += ", " + date_text();
  return text + ".";
}

// Zoom with the mouse.

void TGraphForm::press(mouse_button button, double x, double y) {
  if (!plot_.contains(x, y)) return;
  zooming_ = button;
  if (button == mouse_button::left)
    band_ = {x, plot_.top, x, plot_.bottom};
  else
    band_ = {plot_.left, y, plot_.right, y};
}

// The edge that the pointer has passed moves with it.
void TGraphForm::move(double x, double y) {
  if (!zooming_ || !plot_.contains(x, y)) return;
  if (*zooming_ == mouse_button::left)
    (x <= band_.left ? band_.left : band_.right) = x;
  else
    (y <= band_.top ? band_.top : band_.bottom) = y;
}

void TGraphForm::release(double x, double y) {
  if (!zooming_) return;
  move(x, y);
  const mouse_button button = *zooming_;
  zooming_.reset();
  if (!plot_.contains(x, y)) return;
  if (button == mouse_button::left && band_.right - band_.left >= shortest_drag) zoom_time();
  if (button == mouse_button::right && band_.bottom - band_.top >= shortest_drag) zoom_value(x);
}

void TGraphForm::zoom_time() {
  const double width = plot_.right - plot_.left;
  const double from = (band_.left - plot_.left) / width, to = (band_.right - plot_.left) / width;
  if (from < 0 || to > 1) return;
  zoom_stack_.push_back(bounds_);
  const double_sextuple before = bounds_;
  bounds_.x_maximum = value_at(to, before.x_minimum, before.x_maximum);
  bounds_.x_minimum = value_at(from, before.x_minimum, before.x_maximum);
}

void TGraphForm::zoom_value(double x) {
  const double height = plot_.bottom - plot_.top;
  const double high = 1 - (band_.top - plot_.top) / height, low = 1 - (band_.bottom - plot_.top) / height;
  if (low < 0 || high > 1) return;
  zoom_stack_.push_back(bounds_);
  const double_sextuple before = bounds_;
  const double across = (x - plot_.left) / (plot_.right - plot_.left);
  constexpr double first_axis_alone = 0.333, second_axis_alone = 0.666;
  const bool first = y_zoom_axes == 0 ? across < second_axis_alone : y_zoom_axes != 2;
  const bool second = y_zoom_axes == 0 ? across > first_axis_alone : y_zoom_axes != 1;
  if (first) {
    bounds_.first_maximum = value_at(high, before.first_minimum, before.first_maximum);
    bounds_.first_minimum = value_at(low, before.first_minimum, before.first_maximum);
  }
  if (second) {
    bounds_.second_maximum = value_at(high, before.second_minimum, before.second_maximum);
    bounds_.second_minimum = value_at(low, before.second_minimum, before.second_maximum);
  }
}

namespace {

// False if the bounds are too close to be distinguished.
bool take_middle_half(double& minimum, double& maximum) {
  const double low = minimum + (maximum - minimum) / 4, high = maximum - (maximum - minimum) / 4;
  if (!(minimum < low && low < high && high < maximum)) return false;
  minimum = low;
  maximum = high;
  return true;
}

} // namespace

void TGraphForm::zoom_in_time() {
  const double_sextuple before = bounds_;
  if (take_middle_half(bounds_.x_minimum, bounds_.x_maximum)) zoom_stack_.push_back(before);
}

void TGraphForm::zoom_in_value() {
  const double_sextuple before = bounds_;
  if (!take_middle_half(bounds_.first_minimum, bounds_.first_maximum)) return;
  take_middle_half(bounds_.second_minimum, bounds_.second_maximum);
  zoom_stack_.push_back(before);
}

void TGraphForm::unzoom_by_one_level() {
  if (zoom_stack_.empty()) return;
  bounds_ = zoom_stack_.back();
  zoom_stack_.pop_back();
}

void TGraphForm::unzoom_completely() {
  if (zoom_stack_.empty()) return;
  zoom_stack_.clear();
  bounds_ = default_bounds_;
}

// Paging moves by one whole width, never beyond the data.

void TGraphForm::page_to(double x_minimum, double x_maximum) {
  bounds_.x_minimum = x_minimum;
  bounds_.x_maximum = x_maximum;
}

void TGraphForm::go_to_beginning_of_data() {
  const double width = bounds_.x_maximum - bounds_.x_minimum;
  page_to(data_begin_, data_begin_ + width);
}

void TGraphForm::scroll_back() {
  const double width = bounds_.x_maximum - bounds_.x_minimum;
  if (data_begin_ > bounds_.x_minimum - width)
    page_to(data_begin_, data_begin_ + width);
  else
    page_to(bounds_.x_minimum - width, bounds_.x_minimum);
}

void TGraphForm::scroll_forward() {
  const double width = bounds_.x_maximum - bounds_.x_minimum;
  if (data_end_ < bounds_.x_maximum + width)
    page_to(data_end_ - width, data_end_);
  else
    page_to(bounds_.x_maximum, bounds_.x_maximum + width);
}

void TGraphForm::go_to_end_of_data() {
  const double width = bounds_.x_maximum - bounds_.x_minimum;
  page_to(data_end_ - width, data_end_);
}

std::optional<TGraphForm::point_place> TGraphForm::point_at(double x, double y, double reach) const {
  const double x_scale = (plot_.right - plot_.left) / (bounds_.x_maximum - bounds_.x_minimum);
  const double y_scale = (plot_.bottom - plot_.top) / (bounds_.first_maximum - bounds_.first_minimum);
  std::optional<point_place> best;
  double nearest = reach * reach;
  for (std::size_t s = 0; s < series_.size(); ++s) {
    const general_graph_data& one = *series_[s];
    if (one.is_hidden()) continue;
    const double from = bounds_.x_minimum + (x - reach - plot_.left) / x_scale;
    const double to = bounds_.x_minimum + (x + reach - plot_.left) / x_scale;
    const auto begin = std::ranges::lower_bound(one.x, from) - one.x.begin();
    for (auto i = static_cast<std::size_t>(begin); i < one.x.size() && one.x[i] <= to; ++i) {
      if (!is_drawn(one.y[i])) continue;
      const double dx = plot_.left + (one.x[i] - bounds_.x_minimum) * x_scale - x;
      const double dy = plot_.bottom - (one.y[i] - bounds_.first_minimum) * y_scale - y;
      if (dx * dx + dy * dy > nearest) continue;
      nearest = dx * dx + dy * dy;
      best = point_place{s, i};
    }
  }
  return best;
}

} // namespace vesk
