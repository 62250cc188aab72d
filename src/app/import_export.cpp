// Import and export of the older text formats: jobs of the engine on a file chosen by the user.
#include "app/file_names.h"
#include "app/run_control.h"

namespace vesk {

namespace {

const char* const old_style_filter = "Old Style VESK input files (*.inp)|*.inp|VKN files (*.vkn)|*.vkn";
const file_dialog import_dialog{file_dialog::kind::open, "Import", old_style_filter, "inp"};
const file_dialog export_dialog{file_dialog::kind::save, "Export", old_style_filter, "inp"};

bool is_old_style(const std::string& name) {
  const std::string extension = upper_extension(name);
  return extension == ".INP" || extension == ".VKN";
}

} // namespace

// The files of one model mostly lie in one folder.
file_dialog run_control::in_data_folder(file_dialog dialog) const {
  std::error_code ignored;
  if (const std::filesystem::path folder = documents_.folder(); !folder.empty())
    dialog.folder = std::filesystem::absolute(folder, ignored).native();
  return dialog;
}

void run_control::ask_and_import() {
  documents_.commit_snapshot();
  const auto name = ui_.ask_file(in_data_folder(import_dialog));
  if (!name) return;
  if (is_old_style(*name))
    begin_import(*name);
  else
    form_.report_failure("Cannot import specified file type", failure_kind::data);
}

void run_control::import_file(const std::string& name) {
  if (upper_extension(name) == ".INP")
    begin_import(name);
  else
    form_.report_failure("Cannot import specified file type", failure_kind::data);
}

// The engine is loaded first, so that nothing is replaced without it. Only the launcher notices a running job, after
// the replacement; this is kept for compatibility, and Undo restores the data set.
void run_control::begin_import(const std::string& name) {
  if (!load_engine()) return;
  replaced_by_import_ = documents_.current_data_set ? documents_.name_of_document() : std::string();
  const std::string label = step_label(job_code::import_file, name);
  try {
    documents_.as_step(label, [&] { documents_.begin_document(documents_.file_name, name); });
  } catch (const catalogue_exception& error) {
    return form_.report_failure(error.what(), failure_kind::unavailable);
  }
  form_.update_menus();
  const bool was_busy = active_thread != nullptr;
  launch(job_code::import_file);
  if (was_busy && !documents_.undo_label().empty())
    ui_.add_info_line("\"" + label + "\" was refused, and an empty data set has replaced " + replaced_by_import_ +
                          ". Undo brings it back.",
                      icon_note);
}

void run_control::ask_and_export() {
  const std::uint64_t generation = documents_.generation();
  const auto name = ui_.ask_file(in_data_folder(export_dialog));
  if (name && !documents_.is_replaced_since(generation, "Nothing was exported.")) export_file(*name);
}

void run_control::export_file(const std::string& name) {
  if (!is_old_style(name)) return form_.report_failure("Cannot export specified file type", failure_kind::usage);
  documents_.import_file_name = name;
  launch(job_code::export_file);
  form_.update_caption();
}

} // namespace vesk
