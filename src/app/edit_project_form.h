// The dialog of the files that belong with a data file, without its window.
//
// It works on the data set's own list, and nobody takes a snapshot around it: what was changed stays after Cancel.
#pragma once

#include "app/user_interface.h"
#include "dataset/dataset.h"

namespace vesk {

class TPreveskMainForm;

class TEditProjectForm {
public:
  static constexpr std::string_view caption = "Related project files";
  static constexpr std::string_view column_caption = "Project Component";

  // Both must outlive the form.
  TEditProjectForm(TPreveskMainForm& main_form, user_interface& ui) : main_form_(main_form), ui_(ui) {}

  std::size_t row_count() const;
  std::string cell(std::size_t row) const;                 // empty outside the list
  void set_cell(std::size_t row, const std::string& text); // cut to 255 bytes; nothing outside the list

  // Each takes the selected row, from 0, and returns the row to select then.
  std::size_t InsertRowButtonClick(std::size_t row); // an empty row in its place
  std::size_t DeleteRowButtonClick(std::size_t row);
  std::size_t move_down(std::size_t row); // out of the last row: an empty row at the end
  void BrowseButtonClick(std::size_t row);

  // Whether the form may close. Nothing is looked at when it is cancelled.
  bool FormCloseQuery(bool cancelled);

private:
  shared_list<project_component>* files() const; // null without a data set

  TPreveskMainForm& main_form_;
  user_interface& ui_;
};

} // namespace vesk
