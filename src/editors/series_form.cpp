#include "editors/series_form.h"

namespace vesk {

series_form::series_form(editor_host& host, std::string_view class_name, std::string_view caption, series_ref ref,
                         std::string format)
    : editor(host), class_name_(class_name), caption_(caption), ref_(ref), grid_(host, std::move(format)),
      panel_(add_panel("TheFillCalcTable", grid_, series_buttons, &grid_)) {
  grid_.set_series(ref_);
}

void series_form::take_content() {
  grid_.take_format();
  panel_.table.show(grid_);
}

std::string series_form::find_refusal() {
  const stored_series* series = grid_.series();
  return !series || moments_unique(series->points) ? "" : "Each record must be unique";
}

} // namespace vesk
