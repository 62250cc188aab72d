#include "editors/edit_project_form.h"

#include "platform/letter_case.h"

#include <string_view>

namespace vesk {

namespace {

const file_dialog browse_dialog{file_dialog::kind::open, "",
                                "All supported file types|*.bmd;*.cbm;*.bmg;*.db;*.shp;*.clf"
                                "|BMD files (*.bmd)|*.bmd|CBM files (*.cbm)|*.cbm|BMG files (*.bmg)|*.bmg"
                                "|Database tables (*.db)|*.db|Map layers (*.shp)|*.shp|CLF files (*.clf)|*.clf",
                                ""};

bool is_data_file(std::string_view name) {
  return upper_case(name).ends_with(".VKI");
}

} // namespace

const shared_list<project_component>* TEditProjectForm::name_grid::files() const {
  return host_.data_set() ? &host_.data_set()->project_files : nullptr;
}

cell_value TEditProjectForm::name_grid::value(std::size_t row, std::size_t) const {
  return row < row_count() ? cell_value((*files())[row].str()) : cell_value{};
}

void TEditProjectForm::name_grid::set_value(std::size_t row, std::size_t, const cell_value& value) {
  host_.data_set()->project_files.edit(row) = std::get<std::string>(value);
}

void TEditProjectForm::name_grid::erase_rows(std::size_t first, std::size_t count) {
  host_.data_set()->project_files.erase(first, count);
}

TEditProjectForm::TEditProjectForm(editor_host& host)
    : editor(host), names_(host), panel_(add_panel("ProjectTable", names_, insert_button | delete_button)) {
  panel_.empty_hint = "No files yet. Insert adds a row.";
}

std::vector<editor_command> TEditProjectForm::extra_commands() {
  return {{"&Browse...", "BrowseButton", [this] { BrowseButtonClick(); }}};
}

void TEditProjectForm::take_content() {
  panel_.table.show(names_);
}

void TEditProjectForm::BrowseButtonClick() {
  const std::size_t row = panel_.table.active_row();
  const std::uint64_t generation = host().generation();
  if (row >= names_.row_count()) return;
  const auto name = host().questions().ask_file(browse_dialog);
  if (!name || host().generation() != generation) return;
  history_step step = begin_step("Browse");
  names_.set_value(row, 0, *name);
  step.end();
  panel_.table.display_rows();
}

std::string TEditProjectForm::find_refusal() {
  const auto* names = names_.files();
  if (!names) return {};
  if (std::ranges::any_of(*names, [](const project_component& name) { return is_data_file(name.str()); }))
    return "VESK Input Files (VKI) may not be specified";
  if (std::ranges::any_of(*names, [](const project_component& name) { return name.empty(); }))
    return "Blank filenames are not allowed";
  return {};
}

} // namespace vesk
