#include "app/edit_project_form.h"

#include "app/file_names.h"
#include "app/main_form.h"

#include <algorithm>

namespace vesk {

namespace {

const file_dialog browse_dialog{file_dialog::kind::open, "",
                                "All supported file types|*.bmd;*.cbm;*.bmg;*.db;*.shp;*.clf"
                                "|BMD files (*.bmd)|*.bmd|CBM files (*.cbm)|*.cbm|BMG files (*.bmg)|*.bmg"
                                "|Database tables (*.db)|*.db|Map layers (*.shp)|*.shp|CLF files (*.clf)|*.clf",
                                ""};

} // namespace

shared_list<project_component>* TEditProjectForm::files() const {
  return main_form_.current_data_set ? &main_form_.current_data_set->project_files : nullptr;
}

std::size_t TEditProjectForm::row_count() const {
  return files() ? files()->size() : 0;
}

std::string TEditProjectForm::cell(std::size_t row) const {
  return row < row_count() ? (*files())[row].str() : std::string();
}

void TEditProjectForm::set_cell(std::size_t row, const std::string& text) {
  if (row < row_count()) files()->edit(row) = text;
}

std::size_t TEditProjectForm::InsertRowButtonClick(std::size_t row) {
  if (!files()) return 0;
  row = std::min(row, row_count());
  files()->insert(row, {});
  return row;
}

std::size_t TEditProjectForm::DeleteRowButtonClick(std::size_t row) {
  if (row >= row_count()) return row;
  files()->erase(row);
  return row_count() == 0 ? 0 : std::min(row, row_count() - 1);
}

std::size_t TEditProjectForm::move_down(std::size_t row) {
  if (files() && row + 1 >= row_count()) files()->push_back({});
  return row_count() == 0 ? 0 : std::min(row + 1, row_count() - 1);
}

void TEditProjectForm::BrowseButtonClick(std::size_t row) {
  if (row >= row_count()) return;
  if (const auto name = ui_.ask_file(browse_dialog)) set_cell(row, *name);
}

bool TEditProjectForm::FormCloseQuery(bool cancelled) {
  if (cancelled || !files()) return true;
  const auto refuse = [this](const char* text) {
    ui_.message_box("Error", text, box_buttons::ok);
    return false;
  };
  const auto& names = *files();
  if (std::any_of(names.begin(), names.end(), [](const auto& name) { return upper_extension(name) == ".VKI"; }))
    return refuse("VESK Input Files (VKI) may not be specified");
  if (std::any_of(names.begin(), names.end(), [](const auto& name) { return name.empty(); }))
    return refuse("Blank filenames are not allowed");
  return true;
}

} // namespace vesk
