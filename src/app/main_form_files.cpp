// The commands of the File and Project menus.
//
// There is no dirty flag: New, Open and Import replace the data set without asking. The one question is the one before
// a project is opened.
#include "app/file_names.h"
#include "app/main_form.h"
#include "dataset/vki_file.h"

#include <filesystem>

namespace vesk {

namespace {

const file_dialog open_dialog{file_dialog::kind::open, "",
                              "VESK Files|*.vkp;*.vki|VESK Input Files (*.vki)|*.vki|VESK Projects (*.VKP)|*.vkp",
                              "vkp"};
const file_dialog save_dialog{file_dialog::kind::save, "", "VESK Input Files (*.vki)|*.vki", "vki"};
const char* const old_style_filter = "Old Style VESK input files (*.inp)|*.inp|VKN files (*.vkn)|*.vkn";
const file_dialog import_dialog{file_dialog::kind::open, "", old_style_filter, "inp"};
const file_dialog export_dialog{file_dialog::kind::save, "", old_style_filter, "inp"};

// The hourglass for the length of a block.
class busy_cursor {
public:
  explicit busy_cursor(user_interface& ui) : ui_(ui) { ui_.set_busy(true); }
  ~busy_cursor() { ui_.set_busy(false); }
  busy_cursor(const busy_cursor&) = delete;
  busy_cursor& operator=(const busy_cursor&) = delete;

private:
  user_interface& ui_;
};

} // namespace

void TPreveskMainForm::make_data_sets() {
  const auto tables = catalogue.get();
  auto current = std::make_unique<prevesk_dataset_data_type>(tables);
  auto backup = std::make_unique<prevesk_dataset_data_type>(tables);
  take_data_sets(std::move(current), std::move(backup));
}

void TPreveskMainForm::new_data_set() {
  const busy_cursor busy(ui_);
  try {
    make_data_sets();
    file_name.clear();
    update_caption();
    update_menus();
  } catch (const catalogue_exception&) {
    check_database();
  }
}

void TPreveskMainForm::open_file(const std::string& name) {
  ui_.set_subject(name);
  const std::string extension = upper_extension(name);
  if (extension == ".VKI" || extension == ".VKP") {
    const bool opened = extension == ".VKI" ? load_data_file(name) : open_project_file(name);
    if (!opened) report_failure("Could not open specified file \"" + name + "\" (" + extension + " file)");
  } else {
    report_failure("Could not open specified file type \"" + name + "\" (" + extension + " file)");
  }
  ui_.set_subject("");
}

void TPreveskMainForm::OpenItemClick() {
  if (const auto name = ui_.ask_file(open_dialog)) open_file(*name);
}

bool TPreveskMainForm::load_data_file(const std::string& name) {
  load(name);
  return true; // whatever came of it has been told
}

TPreveskMainForm::load_result TPreveskMainForm::load(const std::string& name) {
  commit_snapshot();
  try {
    if (!read_into_new_data_sets(name)) {
      report_failure("Cannot open file.");
      restore_snapshot(); // of the new data set, so that it stays empty
      update_menus();
      return load_result::cannot_open;
    }
  } catch (const std::exception& error) {
    report_failure(error.what()); // a damaged file, or no catalogue to read it with
    return load_result::refused;
  }
  if (current_data_set->file_version != prevesk_dataset_data_type::current_file_version())
    ui_.message_box("Error", "VKI Version not supported; data could be corrupt.", box_buttons::ok);
  const std::uint32_t model = current_data_set->model_type;
  if (model != 0 && !current_data_set->catalogue()->find_model(model))
    ui_.message_box("Error",
                    "The catalogue has no model " + std::to_string(model) + ", which " + name +
                        " is for; its systems, parameters, constants, time functions and outputs are not shown.",
                    box_buttons::ok);
  return load_result::loaded;
}

// Replaces both data sets, the file's name with them, unless the file is damaged: then it throws and all is as it was.
// A file that cannot be opened (false) leaves new, empty data sets under its name.
bool TPreveskMainForm::read_into_new_data_sets(const std::string& name) {
  const busy_cursor busy(ui_);
  const auto tables = catalogue.get();
  auto backup = std::make_unique<prevesk_dataset_data_type>(tables);
  auto fresh = std::make_unique<prevesk_dataset_data_type>(tables);
  bool opened = true;
  try {
    read_data_file(name, *fresh);
  } catch (const file_open_exception&) {
    opened = false;
  } catch (...) {
    if (current_data_set) current_data_set->apply_thread_defaults(); // reading had moved them
    throw;
  }
  take_data_sets(std::move(fresh), std::move(backup));
  file_name = name;
  if (!opened) return false;
  update_caption();
  update_menus();
  return true;
}

void TPreveskMainForm::SaveItemClick() {
  if (!current_data_set) return;
  if (file_name.empty()) return SaveasItemClick();
  const file_name_parts parts = split_file_name(file_name);
  if (upper_case(parts.extension) != ".VKI") file_name = parts.folder + parts.base + ".VKI";
  save_to_file_name();
}

void TPreveskMainForm::save_to_file_name() {
  ui_.set_subject(file_name);
  try {
    const busy_cursor busy(ui_);
    save_data_file(file_name, *current_data_set);
    update_caption();
  } catch (const file_open_exception&) {
    report_failure("Cannot open file for writing.");
  } catch (const std::exception& error) {
    report_failure(error.what());
  }
  ui_.set_subject("");
}

void TPreveskMainForm::SaveasItemClick() {
  const auto name = ui_.ask_file(save_dialog);
  if (!name) return;
  file_name = *name;
  SaveItemClick();
}

void TPreveskMainForm::ImportItemClick() {
  commit_snapshot();
  const auto name = ui_.ask_file(import_dialog);
  if (!name) return;
  const std::string extension = upper_extension(*name);
  if (extension == ".INP" || extension == ".VKN")
    prepare_import(*name);
  else
    report_failure("Cannot import specified file type");
}

void TPreveskMainForm::import_file(const std::string& name) {
  if (upper_extension(name) == ".INP")
    prepare_import(name);
  else
    report_failure("Cannot import specified file type");
}

void TPreveskMainForm::prepare_import(const std::string& name) {
  try {
    make_data_sets();
  } catch (const catalogue_exception& error) {
    return report_failure(error.what());
  }
  update_menus();
  import_file_name = name;
  start_import_export(true);
}

void TPreveskMainForm::ExportItemClick() {
  if (const auto name = ui_.ask_file(export_dialog)) export_file(*name);
}

void TPreveskMainForm::export_file(const std::string& name) {
  const std::string extension = upper_extension(name);
  if (extension == ".INP" || extension == ".VKN") {
    import_file_name = name;
    start_import_export(false);
    update_caption();
  } else {
    report_failure("Cannot export specified file type");
  }
}

} // namespace vesk
