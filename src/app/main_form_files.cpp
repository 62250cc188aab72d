// The commands of the File and Project menus.
//
// There is no dirty flag: New, Open and Import replace the data set without asking. There are two questions: the one
// before a project is opened, and the one before a file is replaced that the data set did not come from.
#include "app/file_names.h"
#include "app/main_form.h"
#include "dataset/file_version_text.h"
#include "dataset/vki_file.h"

#include <algorithm>
#include <filesystem>

namespace vesk {

namespace {

const file_dialog open_dialog{file_dialog::kind::open, "",
                              "VESK Files|*.vkp;*.vki|VESK Input Files (*.vki)|*.vki|VESK Projects (*.VKP)|*.vkp",
                              "vkp"};
constexpr const char* data_file_ending = ".vki";
const file_dialog save_dialog{file_dialog::kind::save, "", "VESK Input Files (*.vki)|*.vki", "vki", data_file_ending};
const char* const old_style_filter = "Old Style VESK input files (*.inp)|*.inp|VKN files (*.vkn)|*.vkn";
const file_dialog import_dialog{file_dialog::kind::open, "", old_style_filter, "inp"};
const file_dialog export_dialog{file_dialog::kind::save, "", old_style_filter, "inp"};

// "a, b and 5 more", with at most ten of them named.
std::string enumerated(const std::vector<std::string>& names) {
  constexpr std::size_t most = 10;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), most); ++i) text += (i > 0 ? ", " : "") + names[i];
  if (names.size() > most) text += " and " + std::to_string(names.size() - most) + " more";
  return text;
}

// Reads a data file. One that cannot be opened is left out when it `may_be_missing`: `opened` is false then.
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

// An empty data set of the catalogue's first model. Throws catalogue_exception, and all is as it was.
void TPreveskMainForm::begin_document(const std::string& its_file_name, const std::string& its_import_file_name) {
  replace({prevesk_dataset_data_type(catalogue.get()), its_file_name, its_import_file_name, ++last_document_});
  *backup_data_set = *current_data_set;
}

void TPreveskMainForm::new_data_set() {
  const busy_cursor busy(ui_);
  try {
    as_step("New", [this] { begin_document("", import_file_name); });
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
  as_step("Open " + leaf_of(name), [&] { load(name); });
  return true; // whatever came of it has been told
}

TPreveskMainForm::load_result TPreveskMainForm::load(const std::string& name, load_kind kind) {
  commit_snapshot();
  reading_losses losses;
  try {
    if (!read_into_new_data_sets(name, kind, losses)) {
      report_failure("Cannot open file.");
      update_menus();
      return load_result::cannot_open;
    }
  } catch (const file_open_exception&) {
    return load_result::refused;
  } catch (const std::exception& error) {
    report_failure(error.what()); // a damaged file, or no catalogue to read it with
    return load_result::refused;
  }
  if (current_data_set->file_version != prevesk_dataset_data_type::current_file_version())
    ui_.message_box("Error", "VKI Version not supported; data could be corrupt.", box_buttons::ok);
  tell_losses(name, losses);
  return load_result::loaded;
}

// Of a file that was read in part the user has to know what is missing before saving over it.
void TPreveskMainForm::tell_losses(const std::string& name, const reading_losses& losses) {
  const std::string dropped = in_words(losses.dropped);
  if (losses.newer_version != 0)
    ui_.add_info_line(name + " has version " + file_version_text(losses.newer_version) + ", which is newer than " +
                          file_version_text(prevesk_dataset_data_type::current_file_version()) + ": " +
                          byte_count(losses.bytes_not_read) + " at its end " +
                          (losses.bytes_not_read == 1 ? "was" : "were") +
                          " not read. A saved copy lacks what was not read.",
                      icon_note);
  if (losses.model_is_unknown && (current_data_set->model_type != 0 || !dropped.empty()))
    ui_.message_box("Error",
                    "The catalogue has no model " + std::to_string(current_data_set->model_type) + ", which " + name +
                        " is for." + (dropped.empty() ? "" : " Dropped: " + dropped + ".") +
                        " Open it with a catalogue that has the model.",
                    box_buttons::ok);
  else if (!losses.names.empty())
    ui_.add_info_line(
        name + ": the catalogue no longer has " + enumerated(losses.names) + ". Dropped: " + dropped + ".", icon_note);
  if (losses.newer_version != 0 || (losses.model_is_unknown && losses.any())) ++files_partly_read_;
}

// Replaces both data sets, the file's name with them, unless the file is damaged: then it throws and all is as it was.
// A file that cannot be opened (false) leaves new, empty data sets under its name; if it is a member of a project, it
// throws, too.
bool TPreveskMainForm::read_into_new_data_sets(const std::string& name, load_kind kind, reading_losses& losses) {
  const busy_cursor busy(ui_);
  const prevesk_dataset_data_type empty(catalogue.get());
  document fresh{empty, name, import_file_name, last_document_ + 1};
  bool opened = true;
  try {
    losses = read_or_miss(name, fresh.data_set, kind == load_kind::data_file, opened);
  } catch (...) {
    if (current_data_set) current_data_set->apply_thread_defaults(); // reading had moved them
    throw;
  }
  ++last_document_;
  replace(std::move(fresh), opened);
  *backup_data_set = empty;
  if (opened) update_menus();
  return opened;
}

bool TPreveskMainForm::save() {
  if (!current_data_set) return false;
  if (file_name.empty()) return ask_name_and_save();
  const file_name_parts parts = split_file_name(file_name);
  const bool has_ending = upper_case(parts.extension) == ".VKI";
  const std::string name = has_ending ? file_name : parts.folder + parts.base + ".VKI";
  if (!may_replace(name)) return false;
  file_name = name;
  return save_to_file_name();
}

// The dialog asks about an existing file itself, by the name with the ending.
bool TPreveskMainForm::ask_name_and_save() {
  const std::uint64_t generation = generation_;
  const auto name = ui_.ask_file(save_dialog);
  return name && !is_replaced_since(generation, "Nothing was saved.") && save_as(*name);
}

bool TPreveskMainForm::save_as(const std::string& name) {
  if (!current_data_set) return false;
  file_name = with_ending(name, data_file_ending);
  return save_to_file_name();
}

// Whether `name` may be written without a loss that the user does not know of: there is no such file, it is the one
// that the data set came from, or the user agrees.
bool TPreveskMainForm::may_replace(const std::string& name) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (!fs::exists(name, ignored) || fs::is_directory(name, ignored)) return true; // writing tells
  const file_origin& origin = current_data_set->origin;
  if (origin.is_set() && identity_of(fs::path(name)) == origin.identity) return true;
  const bool has_changed = origin.is_set() && origin_of(name, origin.identity).file == origin.file;
  const std::string cause = has_changed ? " has changed since this data set was read from it or saved to it."
                                        : " exists already. It holds data that is not in this data set.";
  const std::uint64_t generation = generation_;
  const box_answer answer = ui_.message_box("Replace file?", name + cause + "\r\nReplace it?", box_buttons::yes_no);
  return answer == box_answer::yes && !is_replaced_since(generation, "Nothing was saved.");
}

bool TPreveskMainForm::save_to_file_name() {
  ui_.set_subject(file_name);
  bool saved = false;
  try {
    const busy_cursor busy(ui_);
    current_data_set->origin = save_data_file(file_name, *current_data_set);
    current_data_set->file_version = prevesk_dataset_data_type::current_file_version(); // as it was written
    update_caption();
    saved = true;
  } catch (const file_open_exception&) {
    report_failure("Cannot open file for writing.");
  } catch (const std::exception& error) {
    report_failure(error.what());
  }
  ui_.set_subject("");
  return saved;
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

// The engine is looked for first: without it nothing is replaced. A job that is busy is found too late for that, as it
// has always been; Undo brings back what was there.
void TPreveskMainForm::prepare_import(const std::string& name) {
  if (!load_engine()) return;
  replaced_by_import_ = current_data_set ? name_of_document() : std::string();
  const std::string label = "Import " + leaf_of(name);
  try {
    as_step(label, [&] { begin_document(file_name, name); });
  } catch (const catalogue_exception& error) {
    return report_failure(error.what());
  }
  update_menus();
  const bool was_busy = active_thread != nullptr;
  start_import_export(true);
  if (was_busy && !undo_label().empty())
    ui_.add_info_line("\"" + label + "\" was refused, and an empty data set has replaced " + replaced_by_import_ +
                          ". Undo brings it back.",
                      icon_note);
}

void TPreveskMainForm::ExportItemClick() {
  const std::uint64_t generation = generation_;
  const auto name = ui_.ask_file(export_dialog);
  if (name && !is_replaced_since(generation, "Nothing was exported.")) export_file(*name);
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
