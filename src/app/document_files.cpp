// New, Open and Save.
#include "app/busy_cursor.h"
#include "app/document_control.h"
#include "app/failure_kinds.h"
#include "app/file_names.h"
#include "dataset/file_version_text.h"
#include "dataset/vki_file.h"
#include "platform/counted.h"
#include "platform/letter_case.h"

#include <algorithm>
#include <filesystem>

namespace vesk {

namespace {

const file_dialog open_dialog{file_dialog::kind::open, "",
                              "VESK Files|*.vkp;*.vki|VESK Input Files (*.vki)|*.vki|VESK Projects (*.VKP)|*.vkp",
                              "vkp"};
constexpr const char* data_file_ending = ".vki";
const file_dialog save_dialog{file_dialog::kind::save, "", "VESK Input Files (*.vki)|*.vki", "vki", data_file_ending};

// "a, b and 5 more"; at most ten names are listed.
std::string enumerated(const std::vector<std::string>& names) {
  constexpr std::size_t most = 10;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), most); ++i) text += (i > 0 ? ", " : "") + names[i];
  if (names.size() > most) text += " and " + std::to_string(names.size() - most) + " more";
  return text;
}

// Reads a data file. With `may_be_missing`, a file that cannot be opened is not an error; `opened` is then false.
reading_losses read_or_miss(const std::string& name, prevesk_dataset_data_type& data, bool may_be_missing,
                            bool& opened) {
  try {
    return read_data_file(name, data);
  } catch (const file_open_exception&) {
    if (!may_be_missing) throw;
    opened = false;
    return {};
  }
}

} // namespace

document_control::document_control(user_interface& ui, main_form_services& form, catalogue_source& catalogue,
                                   std::size_t history_limit)
    : ui_(ui), form_(form), catalogue_(catalogue), steps_(history_limit) {}

void document_control::commit_snapshot() {
  if (current_data_set && backup_data_set) *backup_data_set = *current_data_set;
}

void document_control::restore_snapshot() {
  if (current_data_set && backup_data_set) take_content(*backup_data_set);
}

void document_control::take_present_catalogue() {
  if (!current_data_set) return;
  try {
    const auto tables = catalogue_.get();
    current_data_set->set_catalogue(tables);
    backup_data_set->set_catalogue(tables);
    current_data_set->apply_thread_defaults();
  } catch (const catalogue_exception&) { // the data set keeps its current one
  }
}

void document_control::begin_document(const std::string& its_file_name, const std::string& its_import_file_name) {
  replace_by_another({prevesk_dataset_data_type(catalogue_.get()), its_file_name, its_import_file_name});
  *backup_data_set = *current_data_set;
  note_saved();
}

void document_control::new_data_set() {
  const busy_cursor busy(ui_);
  try {
    as_step("New", [this] { begin_document("", import_file_name); });
    form_.update_menus();
  } catch (const catalogue_exception&) {
    form_.check_database();
  }
}

void document_control::open_file(const std::string& name) {
  ui_.set_subject(name);
  const std::string extension = upper_extension(name);
  if (extension == ".VKI") {
    as_step("Open " + leaf_of(name), [&] { load(name); });
  } else if (extension == ".VKP") {
    std::error_code ignored;
    if (!open_project_file(name))
      form_.report_failure("Could not open specified file \"" + name + "\" (.VKP file)",
                           std::filesystem::exists(name, ignored) ? failure_kind::data : failure_kind::missing_input);
  } else {
    form_.report_failure("Could not open specified file type \"" + name + "\" (" + extension + " file)",
                         failure_kind::data);
  }
  ui_.set_subject("");
}

void document_control::ask_and_open() {
  if (const auto name = ui_.ask_file(open_dialog)) open_file(*name);
}

// The box shows the sentence alone; the record of a run, which is read elsewhere, has the file's name as well.
void document_control::report_file_failure(const std::string& file, const std::string& sentence, failure_kind kind) {
  form_.note_failure(file + ": " + sentence, kind);
  ui_.message_box("Error", sentence, box_buttons::ok);
}

document_control::load_result document_control::load(const std::string& name, load_kind kind) {
  commit_snapshot();
  reading_losses losses;
  try {
    if (!read_into_new_data_sets(name, kind, losses)) {
      report_file_failure(name, "Cannot open file.", failure_kind::missing_input);
      form_.update_menus();
      return load_result::cannot_open;
    }
  } catch (const file_open_exception&) {
    return load_result::refused;
  } catch (const std::exception& error) {
    form_.report_failure(error.what(), kind_of_failure(error)); // a damaged file, or no catalogue to read it with
    return load_result::refused;
  }
  if (current_data_set->file_version != prevesk_dataset_data_type::current_file_version())
    ui_.message_box("Error", "VKI Version not supported; data could be corrupt.", box_buttons::ok);
  report_losses(name, losses);
  if (kind == load_kind::data_file) form_.note_used_file(name);
  return load_result::loaded;
}

// Users must know what was not read from a file before they save over it.
void document_control::report_losses(const std::string& name, const reading_losses& losses) {
  const std::string dropped = in_words(losses.dropped);
  if (losses.newer_version != 0)
    ui_.add_info_line(name + " has version " + file_version_text(losses.newer_version) + ", newer than " +
                          file_version_text(prevesk_dataset_data_type::current_file_version()) + ": " +
                          counted(losses.bytes_not_read, "byte") + " at its end " +
                          (losses.bytes_not_read == 1 ? "was not read. A saved copy lacks it."
                                                      : "were not read. A saved copy lacks them."),
                      icon_note);
  if (losses.model_is_unknown && (current_data_set->model_type != 0 || !dropped.empty()))
    ui_.message_box("Error",
                    name + " is for model " + std::to_string(current_data_set->model_type) +
                        ", which the catalogue does not have." + (dropped.empty() ? "" : " Dropped: " + dropped + ".") +
                        " Open it with a catalogue that has the model.",
                    box_buttons::ok);
  else if (!losses.names.empty())
    ui_.add_info_line(
        name + ": the catalogue no longer has " + enumerated(losses.names) + ". Dropped: " + dropped + ".", icon_note);
  if (losses.newer_version != 0 || (losses.model_is_unknown && losses.any())) ++files_partly_read_;
}

// Replaces both data sets and the file name. A damaged file throws, and nothing changes. A file that cannot be opened
// gives new, empty data sets with its name, and false; a file that the user has not named throws in this case too.
bool document_control::read_into_new_data_sets(const std::string& name, load_kind kind, reading_losses& losses) {
  const busy_cursor busy(ui_);
  const prevesk_dataset_data_type empty(catalogue_.get());
  document fresh{empty, name, import_file_name};
  bool opened = true;
  try {
    losses = read_or_miss(name, fresh.data_set, kind == load_kind::data_file, opened);
  } catch (...) {
    if (current_data_set) current_data_set->apply_thread_defaults(); // reading has changed them
    throw;
  }
  replace_by_another(std::move(fresh), opened);
  *backup_data_set = empty;
  note_saved();
  if (opened) form_.update_menus();
  return opened;
}

bool document_control::save() {
  if (!current_data_set) return false;
  if (file_name.empty()) return ask_name_and_save();
  const file_name_parts parts = split_file_name(file_name);
  const bool has_ending = upper_case(parts.extension) == ".VKI";
  const std::string name = has_ending ? file_name : parts.folder + parts.base + ".VKI";
  if (!may_replace(name)) return false;
  file_name = name;
  return save_to_file_name();
}

// The dialog itself asks before replacing an existing file, with the extension already appended.
bool document_control::ask_name_and_save() {
  const std::uint64_t generation = generation_;
  file_dialog dialog = save_dialog;
  std::error_code ignored;
  if (!file_name.empty()) dialog.folder = std::filesystem::absolute(folder(), ignored).native();
  const auto name = ui_.ask_file(dialog);
  return name && !is_replaced_since(generation, "Nothing was saved.") && save_as(*name);
}

bool document_control::save_as(const std::string& name) {
  if (!current_data_set) return false;
  file_name = with_ending(name, data_file_ending);
  return save_to_file_name();
}

// Whether writing `name` loses nothing without the user's consent: there is no such file, it is the data set's origin,
// or the user agrees.
bool document_control::may_replace(const std::string& name) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (!fs::exists(name, ignored) || fs::is_directory(name, ignored)) return true; // writing reports the cause
  const file_origin& origin = current_data_set->origin;
  if (origin.is_set() && identity_of(fs::path(name)) == origin.identity) return true;
  const bool has_changed = origin.is_set() && origin_of(name, origin.identity).file == origin.file;
  const std::string cause = has_changed ? " has changed since this data set was read from it or saved to it."
                                        : " already exists and contains data that is not in this data set.";
  const std::uint64_t generation = generation_;
  const box_answer answer = ui_.message_box("Replace file?", name + cause + "\r\nReplace it?", box_buttons::yes_no);
  return answer == box_answer::yes && !is_replaced_since(generation, "Nothing was saved.");
}

bool document_control::save_to_file_name() {
  ui_.set_subject(file_name);
  bool saved = false;
  try {
    const busy_cursor busy(ui_);
    const auto earlier = hold_earlier_version();
    current_data_set->origin = save_data_file(file_name, *current_data_set);
    current_data_set->file_version = prevesk_dataset_data_type::current_file_version(); // as written
    steps_.set_file(document_number_, file_name, current_data_set->origin);
    form_.update_caption();
    form_.note_used_file(file_name);
    if (earlier) earlier->keep();
    note_saved();
    saved = true;
  } catch (const file_open_exception& error) {
    report_file_failure(file_name, "Cannot open file for writing.", kind_of_writing_failure(error));
  } catch (const std::exception& error) {
    form_.report_failure(error.what(), kind_of_writing_failure(error));
  }
  ui_.set_subject("");
  return saved;
}

} // namespace vesk
