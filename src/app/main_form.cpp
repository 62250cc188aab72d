#include "app/main_form.h"

#include "app/failure_kinds.h"
#include "app/file_names.h"
#include "app/forms.h"
#include "platform/program_paths.h"
#include "shell/keywords/dictionary.h"

namespace vesk {

namespace {

namespace fs = std::filesystem;

const file_dialog results_dialog{file_dialog::kind::open, "Open results",
                                 "Results (*.nc)|*.nc;*.nc4;*.cdf|All Files (*)|*", "nc"};
const file_dialog dictionary_dialog{file_dialog::kind::save, "", "Dictionary Text|*.txt", "txt"};

std::string with_separator(const fs::path& folder) {
  return (folder / "").string();
}

std::size_t undo_limit(int megabytes) {
  return megabytes > 0 ? static_cast<std::size_t>(megabytes) * 1'000'000 : history::default_limit();
}

} // namespace

void TPreveskMainForm::set_undo_megabytes(int megabytes) {
  settings.UndoMegabytes = megabytes;
  documents_.steps().set_limit(undo_limit(megabytes));
  update_menus();
}

TPreveskMainForm::TPreveskMainForm(user_interface& ui, const fs::path& settings_file,
                                   configuration::access settings_access)
    : ui_(ui), settings(settings_file, settings_access), catalogue(settings.DatabaseDir),
      documents_(ui, *this, catalogue, undo_limit(settings.UndoMegabytes)), runs_(ui, *this, documents_, settings),
      outside_(ui) {
  const fs::path data = user_data_directory(), documents = user_documents_directory();
  application_data_directory = data.empty() ? program_directory : with_separator(data);
  documents_directory = documents.empty() ? program_directory : with_separator(documents);
  const fs::path log_folder = log_directory(program_directory);
  if (!log_folder.empty()) log_file_name = log_folder / "LOG.TXT";
  forms_ = std::make_unique<program_forms>(*this, settings.EditionName);
  for (const std::string& part : {settings.ApplicationName, settings.EditionName})
    if (!part.empty()) base_caption += " " + part;
}

TPreveskMainForm::~TPreveskMainForm() {
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
  documents_.take_present_catalogue();
}

void TPreveskMainForm::Setdatabasefolder1Click() {
  select_database_folder();
  check_database();
}

void TPreveskMainForm::serve_a_window() {
  keeps_previous_results = true;
  const fs::path state = state_directory();
  if (state.empty()) return;
  marks_folder_ = state / "open";
  documents_.keep_work_in(state);
}

// Follows the name of the open file, however it came to be: Open, Save as, Undo, an engine.
void TPreveskMainForm::mark_open_file() {
  if (marks_folder_.empty() || file_name == marked_file_) return;
  marked_file_ = file_name;
  mark_ = file_name.empty() ? open_mark() : open_mark(file_name, marks_folder_);
  if (!mark_.was_alone())
    ui_.add_info_line(leaf_of(file_name) +
                          " is open in another window, too. Whoever saves last replaces what the other has saved.",
                      icon_note);
}

void TPreveskMainForm::note_used_file(const std::string& name) {
  std::error_code ignored;
  const fs::path whole = fs::absolute(name, ignored).lexically_normal();
  settings.add_recent_file(whole.native());
  ui_.recent_files_changed();
}

void TPreveskMainForm::update_caption() {
  mark_open_file();
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

void TPreveskMainForm::note_failure(const std::string& text, failure_kind kind) {
  if (failures_++ == 0) first_failure_ = {text, kind};
}

void TPreveskMainForm::report_failure(const std::string& text, failure_kind kind) {
  note_failure(text, kind);
  ui_.message_box("Error", text, box_buttons::ok);
}

void TPreveskMainForm::open_file(const std::string& name) {
  const std::string extension = upper_extension(name);
  const bool is_results = extension == ".NC" || extension == ".NC4" || extension == ".CDF";
  if (!is_results || !ui_.show_results(name, false)) documents_.open_file(name);
}

void TPreveskMainForm::OpenResultsItemClick() {
  if (const auto name = ui_.ask_file(results_dialog)) ui_.show_results(*name, false);
}

void TPreveskMainForm::ResultsItemClick() {
  const std::string file = results_base().native() + ".nc";
  std::error_code missing;
  ui_.show_results(!file_name.empty() && fs::is_regular_file(file, missing) ? file : std::string(), false);
}

// Only a file beside the open data file, under its name. Its folder is left out, so that both can move together.
void TPreveskMainForm::list_related_file(const fs::path& file) {
  if (!current_data_set || file_name.empty() || active_thread) return;
  const fs::path data_file = fs::absolute(file_name).lexically_normal();
  if (data_file.parent_path() != file.parent_path() ||
      !file.filename().native().starts_with(data_file.stem().native() + "."))
    return;
  const std::string name = file.filename().string();
  for (const project_component& it : current_data_set->project_files)
    if (it.str() == name) return;
  begin_step("List " + name, {});
  current_data_set->project_files.push_back(name);
  end_step(true);
  update_menus();
  add_info_line(name + " is now listed among the project files; save the data set to keep that.", icon_plain);
}

void TPreveskMainForm::DictionaryItemClick() {
  const auto name = ui_.ask_file(dictionary_dialog);
  if (!name) return;
  try {
    if (write_dictionary_file(*name)) ui_.message_box("Complete", "Dictionary written", box_buttons::ok);
  } catch (const file_exception& error) {
    report_failure(error.what(), kind_of_writing_failure(error));
  }
}

} // namespace vesk
