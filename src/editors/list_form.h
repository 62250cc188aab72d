// The editors of lists defined by the model's catalogue: one grid, a column table, no rows to add or remove.
#pragma once

#include "editors/editor.h"
#include "editors/record_grid.h"

namespace vesk {

template <class Record>
class list_form : public editor {
public:
  std::string_view class_name() const override { return class_name_; }
  std::string caption() const override { return std::string(caption_); }

protected:
  list_form(editor_host& host, std::string_view class_name, std::string_view caption, record_grid<Record> rows,
            unsigned buttons = block_buttons)
      : editor(host), class_name_(class_name), caption_(caption), grid_(std::move(rows)),
        panel_(add_panel("TheFillCalcTable", grid_, buttons)) {
    panel_.empty_hint = "The model has none of these.";
  }

  void take_content() override {
    grid_.take_formats(host());
    panel_.table.show(grid_);
  }

  record_grid<Record>& records() { return grid_; }
  editor_panel& panel() { return panel_; }

private:
  std::string_view class_name_, caption_;
  record_grid<Record> grid_;
  editor_panel& panel_;
};

} // namespace vesk
