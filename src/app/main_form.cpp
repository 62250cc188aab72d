#include "app/main_form.h"

#include "app/file_names.h"
#include "platform/program_paths.h"

namespace vesk {

TPreveskMainForm::TPreveskMainForm(user_interface& ui)
    : engine_path(engine_library::default_path()), catalogue(catalogue_source::default_directory()), ui_(ui) {
  const auto directory = is_writable_directory(program_directory()) ? program_directory() : state_directory();
  log_file_name = directory / "LOG.TXT";
  execute_query = [](const import_query_descriptor& query, const prevesk_dataset_data_type&, point_list&) {
    throw query_engine_exception("the query '" + query.name +
                                 "' cannot be executed, because this program has no access to its source yet");
  };
}

TPreveskMainForm::~TPreveskMainForm() = default;

command_line_requests TPreveskMainForm::walk_command_line(std::span<const std::string> arguments,
                                                          const std::function<bool()>& keep_going) {
  command_line_requests requests;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string option = upper_case(arguments[i]);
    if (option == "-RUN") {
      requests.run = true;
    } else if (option == "-EXPERT") {
      // Recognised, without an effect.
    } else if (option == "-QUIT") {
      requests.quit = true;
    } else if (option == "-IMPORT") {
      requests.import_requested = true;
      requests.import_name = i + 1 < arguments.size() ? arguments[++i] : std::string();
    } else if (keep_going()) {
      open_file(arguments[i]);
    }
  }
  return requests;
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
                  "Unable to find ORLVesk database in folder\r\n" + catalogue.directory().string() +
                      "\r\nYou must now select the correct database directory\r\n",
                  box_buttons::ok);
  if (const auto folder = ui_.ask_folder("Select database directory")) catalogue.set_directory(*folder);
  if (can_be_opened()) return;
  ui_.message_box("Failed to locate database",
                  "Failed to find ORLVesk database in folder\r\n" + catalogue.directory().string() +
                      ".\r\nSome program functions may not operate properly until\r\n"
                      "you use the 'set database directory' option on the File\r\n"
                      "menu to set the database directory\r\n",
                  box_buttons::ok);
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
  now.has_data = current_data_set != nullptr;
  now.has_model = now.has_data && current_data_set->model_type != 0;
  now.ready = now.has_model && current_data_set->end_date_time() > current_data_set->start_date_time();
  return now;
}

void TPreveskMainForm::update_menus() {
  ui_.set_commands(conditions());
}

void TPreveskMainForm::commit_snapshot() {
  if (current_data_set && backup_data_set) *backup_data_set = *current_data_set;
}

void TPreveskMainForm::restore_snapshot() {
  if (current_data_set && backup_data_set) *current_data_set = *backup_data_set;
}

void TPreveskMainForm::report_failure(const std::string& text) {
  ++failures_;
  ui_.message_box("Error", text, box_buttons::ok);
}

void TPreveskMainForm::add_info_line(const std::string& text, int icon) {
  ui_.add_info_line(text, icon);
}

void TPreveskMainForm::clear_info_lines() {
  ui_.clear_info_lines();
}

void TPreveskMainForm::set_file_name(const std::string& name) {
  file_name = name;
  update_caption();
}

} // namespace vesk
