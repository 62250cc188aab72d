#include "editors/time_functions_form.h"

#include "dataset/findings.h"

namespace vesk {

namespace {

enum : std::size_t { name_column, used_column };

using function = time_function_data_type;

std::vector<record_column<function>> columns() {
  return {
      {.header = "Time Function", .type = text_cell(), .field = &function::description, .tool_tip = description_tip},
      {.header = "Used", .type = check_cell(), .field = &function::used},
      {.header = "Interpolation", .type = combo_cell({"Linear", "Step"}, 1), .field = &function::interpolation_type},
  };
}

} // namespace

TTimeFunctionsForm::TTimeFunctionsForm(editor_host& host)
    : editor(host), functions_(data_set_grid(host, &prevesk_dataset_data_type::time_functions, columns())),
      points_(host, "TimeFunctionsBasicSimpleField"), list_(add_panel("TheFillCalcTable", functions_, 0)),
      detail_(add_panel("TFFillCalcTable", points_, series_buttons, &points_)) {
  detail_.label_name = "TimeFunctionLabel";
  list_.empty_hint = "The model has no time functions.";
  list_.table.OnEnteringRow = [this](std::size_t row) { enter_row(row); };
  list_.table.OnDoneEdit = [this](std::size_t) { show_series(list_.table.active_row()); };
  detail_.table.OnEndChange = [this, end = detail_.table.OnEndChange](bool completed) {
    end(completed);
    list_.table.invalidate_row(list_.table.active_row()); // its mark depends on the points
  };
  functions_.mark_of = [this](const function& one, std::size_t column) -> cell_mark {
    if (!this->host().data_set()) return {};
    if (column == name_column) return {source_age(one)};
    if (column != used_column || !one.used) return {};
    std::string finding = used_series_finding(*this->host().data_set(), one);
    if (finding.empty() && !moments_unique(one.points)) finding = "Two of its points have the same date and time.";
    return {std::move(finding)};
  };
}

std::string TTimeFunctionsForm::description() const {
  const prevesk_dataset_data_type* data = host().data_set();
  const std::size_t row = list_.table.active_row();
  return data && row < data->time_functions.size() ? shown_text(data->time_functions[row].description) : std::string();
}

void TTimeFunctionsForm::take_content() {
  list_.table.show(functions_);
  show_series(list_.table.active_row());
}

void TTimeFunctionsForm::FormShow() {
  detail_.table.set_active(0, detail_.table.active_column());
  editor::FormShow();
}

// Another series would replace the refused entry.
void TTimeFunctionsForm::enter_row(std::size_t row) {
  if (!detail_.table.refused()) return show_series(row);
  if (points_.ref()->index == row) return;
  list_.table.set_active(points_.ref()->index, list_.table.active_column());
  may_go_on();
}

void TTimeFunctionsForm::show_series(std::size_t row) {
  const bool inside = row < functions_.row_count();
  const auto ref = inside ? std::optional<series_ref>({series_kind::time_function, 0, row}) : std::nullopt;
  const bool another = points_.ref() != ref;
  points_.set_series(ref);
  points_.take_format();
  if (another) {
    detail_.table.set_selection(std::nullopt);
    detail_.table.set_active(0, detail_.table.active_column());
  }
  detail_.label = inside ? "Time/value pairs for " + description() : "Time/value pairs";
  detail_.empty_hint = inside ? std::string() : "Choose a time function above.";
  detail_.table.show(points_);
  refresh_series();
  refresh_texts();
}

std::string TTimeFunctionsForm::find_refusal() {
  const prevesk_dataset_data_type* data = host().data_set();
  if (!data) return {};
  for (const function& one : data->time_functions)
    if (one.used && !moments_unique(one.points))
      return "Detected duplicate moment in time function for\r\n" + shown_text(one.description);
  return {};
}

} // namespace vesk
