// TKeptWorkForm: lists the unsaved work and the earlier versions that are kept, and selects one to open.
#pragma once

#include "app/kept_folder.h"
#include "editors/form.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vesk {

class TKeptWorkForm final : public form {
public:
  static constexpr std::array<std::string_view, 4> columns{"Data file", "Content", "Kept", "Folder"};
  static constexpr std::string_view explanation =
      "Unsaved changes are kept when another data set replaces them, when the window is closed, and in a crash. The "
      "earlier version of a data file is kept when it is saved.";
  static constexpr std::string_view empty_hint = "Nothing is kept yet.";

  std::string_view class_name() const override { return "TKeptWorkForm"; }
  std::string caption() const override { return "Unsaved work and earlier versions"; }

  std::vector<kept_file> files; // set by the caller before the form is shown
  std::size_t selected = 0;     // of `files`; for OK

  std::array<std::string, columns.size()> row(std::size_t file) const;
};

} // namespace vesk
