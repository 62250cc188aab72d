// TGraphForm: a chart of one or more series, without a widget.
//
// Has the series, the visible bounds, the zoom levels and the title. A view draws them and reports the position of the
// mouse. X is days since 1 January 1970 (or plain numbers), pixels grow to the right and downwards. Main thread only.
#pragma once

#include "charts/general_graph_data.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vesk {

// A value drawn as a gap, as is any value that is not finite.
inline constexpr double hole_value = 1e308;

// Axis bounds: x, first and second vertical axis.
struct double_sextuple {
  double x_minimum = 0, x_maximum = 1;
  double first_minimum = 0, first_maximum = 1;
  double second_minimum = 0, second_maximum = 1;

  friend bool operator==(const double_sextuple&, const double_sextuple&) = default;
};

// The plot area in pixels.
struct plot_rectangle {
  double left = 0, top = 0, right = 1, bottom = 1;

  bool contains(double x, double y) const { return x >= left && x <= right && y >= top && y <= bottom; }
};

class TGraphForm {
public:
  static constexpr const char* caption = "Graph";
  // A drag shorter than this, in pixels, is a click and does not zoom.
  static constexpr double shortest_drag = 3;

  // Colours: background of the chart, of the area around the plot and of the plot, as #RRGGBB.
  struct look {
    const char* backgrounds[3];
  };

  explicit TGraphForm(std::string title = {}) : title_(std::move(title)) {}

  // Takes ownership of a series. Points are sorted by time if necessary; see `was_unsorted`.
  void add_series(std::unique_ptr<general_graph_data> data);
  void add_series(std::vector<std::unique_ptr<general_graph_data>> all);
  // For a chart of one series whose points have changed. Zoomed bounds are kept if the series has the same label.
  void replace_series(std::unique_ptr<general_graph_data> data);

  const std::vector<std::unique_ptr<general_graph_data>>& series() const { return series_; }
  bool was_unsorted() const { return was_unsorted_; } // of any series
  bool date_axis() const { return date_axis_; }
  const double_sextuple& bounds() const { return bounds_; }
  std::string header() const;                                 // title and date text
  std::string summary() const;                                // a sentence, for users who cannot see the chart
  const std::string& x_title() const { return x_title_; }     // below the axis; may be empty
  const std::string& value_title() const { return y_title_; } // beside the axis; may be empty
  void set_titles(std::string x_title, std::string y_title);

  // For charts that share a time axis: all of them have the extent of all data.
  bool has_points() const;
  double data_begin() const { return data_begin_; }
  double data_end() const { return data_end_; }
  void set_data_range(double begin, double end);                       // and shows all of it
  void set_bounds(const double_sextuple& bounds) { bounds_ = bounds; } // not a zoom step
  void forget_zooms() { zoom_stack_.clear(); }

  // A line across the chart at this x; nothing: none.
  std::optional<double> cursor() const { return cursor_; }
  void set_cursor(std::optional<double> x) { cursor_ = x; }
  // The x at a pixel, within the bounds.
  double x_at(double pixel) const;

  bool monochrome() const { return monochrome_; }
  void toggle_monochrome() { monochrome_ = !monochrome_; }
  look present_look() const;

  void set_plot_rectangle(const plot_rectangle& plot) { plot_ = plot; }

  // The mouse. `right_button`: zooms values, otherwise times. The band is drawn by the view while zooming.
  enum class mouse_button { left, right };
  void press(mouse_button button, double x, double y);
  void move(double x, double y);
  void release(double x, double y);
  bool zooming() const { return zooming_.has_value(); }
  const plot_rectangle& band() const { return band_; }
  std::size_t zoom_levels() const { return zoom_stack_.size(); }

  // Keyboard zoom: to the middle half of the view.
  void zoom_in_time();
  void zoom_in_value();

  void unzoom_by_one_level();
  void unzoom_completely();
  void go_to_beginning_of_data();
  void scroll_back();
  void scroll_forward();
  void go_to_end_of_data();

  // The drawn point nearest to a pixel, at most `reach` pixels away: positions of the series and of the point.
  struct point_place {
    std::size_t series, point;
  };
  std::optional<point_place> point_at(double x, double y, double reach) const;

  int y_zoom_axes = 3; // vertical axes changed by a value zoom: 0 by the mouse, 1 first, 2 second, others both

private:
  void find_data_bounds();
  void zoom_time();
  void zoom_value(double x);
  void page_to(double x_minimum, double x_maximum);
  std::string date_text() const;
  double value_at(double fraction, double minimum, double maximum) const {
    return minimum + (maximum - minimum) * fraction;
  }

  std::string title_, x_title_, y_title_;
  std::vector<std::unique_ptr<general_graph_data>> series_;
  bool date_axis_ = true;
  bool was_unsorted_ = false;
  bool monochrome_ = false;
  double data_begin_ = 0, data_end_ = 0; // smallest and largest x of all series
  double_sextuple bounds_, default_bounds_;
  std::deque<double_sextuple> zoom_stack_; // newest last
  plot_rectangle plot_, band_;
  std::optional<mouse_button> zooming_;
  std::optional<double> cursor_;
};

} // namespace vesk
