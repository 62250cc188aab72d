#include "app/main_form.h"

#include "app/documentation.h"
#include "app/file_names.h"
#include "app/forms.h"
#include "platform/program_paths.h"

namespace vesk {

namespace {

namespace fs = std::filesystem;

std::string with_separator(const fs::path& folder) {
  return (folder / "").string();
}

} // namespace

TPreveskMainForm::TPreveskMainForm(user_interface& ui, const fs::path& settings_file,
                                   configuration::access settings_access)
    : settings(settings_file, settings_access), engine_path(engine_library::default_path()),
      catalogue(settings.DatabaseDir), program_directory(with_separator(vesk::program_directory())),
      documentation_directory(vesk::documentation_directory().string()), ui_(ui),
      steps_(settings.UndoMegabytes > 0 ? static_cast<std::size_t>(settings.UndoMegabytes) * 1'000'000
                                        : history::default_limit()) {
  const fs::path data = user_data_directory(), documents = user_documents_directory();
  application_data_directory = data.empty() ? program_directory : with_separator(data);
  documents_directory = documents.empty() ? program_directory : with_separator(documents);
  const auto log_folder = is_writable_directory(program_directory) ? fs::path(program_directory) : state_directory();
  log_file_name = log_folder / "LOG.TXT";
  forms_ = std::make_unique<program_forms>(*this, settings.EditionName);
  for (const std::string& part : {settings.ApplicationName, settings.EditionName})
    if (!part.empty()) base_caption += " " + part;
  execute_query = [this](const import_query_descriptor& query, const prevesk_dataset_data_type& data_set,
                         point_list& points) {
    return import_query(query, split_file_name(file_name).folder).execute(data_set, points);
  };
}

TPreveskMainForm::~TPreveskMainForm() {
  // A run that goes writes its results until the process ends, and that drops the lock.
  if (active_thread) static_cast<void>(output_lock_.release());
  save_settings();
}

void TPreveskMainForm::check_database() {
  const auto can_be_opened = [this] {
    try {
      return catalogue.get() != nullptr;
    } catch (const catalogue_exception&) {
      return false;
    }
  };
  if (can_be_opened()) return;
  ui_.message_box("Cannot locate database",
                  "Unable to find ORLVesk database in folder\r\n" + settings.DatabaseDir +
                      "\r\nYou must now select the correct database directory\r\n",
                  box_buttons::ok);
  select_database_folder();
  if (can_be_opened()) return;
  ui_.message_box("Failed to locate database",
                  "Failed to find ORLVesk database in folder\r\n" + settings.DatabaseDir +
                      ".\r\nSome program functions may not operate properly until\r\n"
                      "you use the 'set database directory' option on the File\r\n"
                      "menu to set the database directory\r\n",
                  box_buttons::ok);
}

void TPreveskMainForm::select_database_folder() {
  if (const auto folder = ui_.ask_folder("Select database directory", settings.DatabaseDir))
    set_database_folder(*folder);
}

void TPreveskMainForm::set_database_folder(const std::string& folder) {
  settings.DatabaseDir = with_separator(folder);
  catalogue.set_directory(settings.DatabaseDir);
  take_present_catalogue();
}

// One that cannot be read leaves the data set its own.
void TPreveskMainForm::take_present_catalogue() {
  if (!current_data_set) return;
  try {
    const auto tables = catalogue.get();
    current_data_set->set_catalogue(tables);
    backup_data_set->set_catalogue(tables);
    current_data_set->apply_thread_defaults();
  } catch (const catalogue_exception&) {
  }
}

void TPreveskMainForm::update_caption() {
  std::string caption = base_caption;
  if (current_data_set)
    caption += ": " + file_name + " (" + current_data_set->description + ", " + current_data_set->model_name + ")";
  ui_.set_caption(caption);
}

command_conditions TPreveskMainForm::conditions() const {
  command_conditions now;
  now.idle = active_thread == nullptr;
  now.running = !now.idle;
  now.has_data = current_data_set != nullptr;
  now.has_model = now.has_data && current_data_set->model_type != 0;
  now.ready = now.has_model && current_data_set->end_date_time() > current_data_set->start_date_time();
  now.undo = undo_label();
  now.redo = redo_label();
  return now;
}

void TPreveskMainForm::update_menus() {
  ui_.set_commands(conditions());
}

void TPreveskMainForm::commit_snapshot() {
  if (current_data_set && backup_data_set) *backup_data_set = *current_data_set;
}

void TPreveskMainForm::restore_snapshot() {
  if (current_data_set && backup_data_set) take_content(*backup_data_set);
}

void TPreveskMainForm::report_failure(const std::string& text) {
  ++failures_;
  ui_.message_box("Error", text, box_buttons::ok);
}

void TPreveskMainForm::add_info_line(const std::string& text, int icon) {
  ui_.add_info_line(text, icon);
  ui_.select_last_info_line();
}

void TPreveskMainForm::clear_info_lines() {
  ui_.clear_info_lines();
}

void TPreveskMainForm::set_file_name(const std::string& name) {
  if (job_start_ && !job_start_->file_name && job_start_->document == document_number_)
    job_start_->file_name = file_name; // Undo puts it back with the data set
  file_name = name;
  update_caption();
}

} // namespace vesk
