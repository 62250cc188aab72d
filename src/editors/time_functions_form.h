// TTimeFunctionsForm: the model's environmental functions, and the series of the active one.
#pragma once

#include "editors/editor.h"
#include "editors/record_grid.h"

namespace vesk {

class TTimeFunctionsForm final : public editor {
public:
  explicit TTimeFunctionsForm(editor_host& host);

  std::string_view class_name() const override { return "TTimeFunctionsForm"; }
  std::string caption() const override { return "Time Functions"; }
  void FormShow() override; // the series starts at its first row

protected:
  void take_content() override;
  std::string find_refusal() override;

private:
  void enter_row(std::size_t row); // unless an entry of the series is refused
  void show_series(std::size_t row);
  std::string description() const; // of the active function

  record_grid<time_function_data_type> functions_;
  series_grid points_;
  editor_panel& list_;
  editor_panel& detail_;
};

} // namespace vesk
