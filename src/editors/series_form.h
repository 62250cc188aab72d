// The editors of one series of the data set.
#pragma once

#include "editors/editor.h"

namespace vesk {

class series_form : public editor {
public:
  std::string_view class_name() const override { return class_name_; }
  std::string caption() const override { return std::string(caption_); }

protected:
  // `format`: the setting with the picture of the values. The chart labels the series with the caption.
  series_form(editor_host& host, std::string_view class_name, std::string_view caption, series_ref ref,
              std::string format);

  void take_content() override;
  std::string find_refusal() override;

private:
  std::string_view class_name_, caption_;
  series_ref ref_;
  series_grid grid_;
  editor_panel& panel_;
};

} // namespace vesk
