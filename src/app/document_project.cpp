// Projects: a text file that lists a data file and other files that belong to it.
#include "app/document_control.h"
#include "app/file_names.h"
#include "platform/counted.h"

#include <filesystem>
#include <fstream>
#include <string_view>

namespace vesk {

namespace {

const file_dialog project_dialog{file_dialog::kind::open, "", "ORL VESK Projects (*.VKP)|*.vkp", "vkp"};

// The number in a project's first line: its leading digits, 0 if there are none.
std::size_t leading_number(const std::string& line) {
  constexpr std::size_t enough = 1'000'000'000; // more lines than any file has
  std::size_t number = 0;
  for (const char c : line) {
    if (c < '0' || c > '9') break;
    number = std::min(enough, number * 10 + static_cast<std::size_t>(c - '0'));
  }
  return number;
}

// A line as in text mode: a carriage return before the line feed is part of the line end.
bool read_line(std::istream& file, std::string& line) {
  if (!std::getline(file, line)) return false;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

std::string absolute_member(const std::string& member, const std::string& project) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const fs::path folder = fs::absolute(project, ignored).parent_path();
  if (fs::exists(folder / member, ignored)) return (folder / member).lexically_normal().string();
  std::string name = member; // from a platform that separates folders by backslashes
  for (char& c : name)
    if (c == '\\') c = '/';
  return (folder / name).lexically_normal().string();
}

} // namespace

bool document_control::open_project_file(const std::string& name) {
  bool opened = false;
  as_step("Open " + leaf_of(name), [&] { opened = read_project(name); });
  if (opened) form_.note_used_file(name);
  return opened;
}

bool document_control::read_project(const std::string& name) {
  std::error_code ignored;
  std::ifstream file; // opening a pipe would wait for a writer
  if (std::filesystem::is_regular_file(name, ignored)) file.open(name, std::ios::binary);
  std::string line;
  if (!file.is_open()) {
    ui_.message_box("Error", "Failed to open " + name, box_buttons::ok);
    return false;
  }
  read_line(file, line);
  if (constexpr std::string_view byte_order_mark = "\xef\xbb\xbf"; line.starts_with(byte_order_mark))
    line.erase(0, byte_order_mark.size()); // from a text editor
  const std::size_t count = leading_number(line);
  const bool has_count = !line.empty() && line[0] >= '0' && line[0] <= '9';
  bool has_data_file = false;
  std::vector<project_component> members;
  for (std::size_t i = 0; i < count; ++i) {
    if (!read_line(file, line)) break; // fewer lines than announced
    if (line.empty()) continue;
    if (upper_extension(line) != ".VKI") {
      members.emplace_back(line);
      continue;
    }
    const std::string data_file = absolute_member(line, name);
    if (load(data_file, load_kind::not_named) == load_result::refused) {
      ui_.message_box("Error", "Failed to open " + data_file, box_buttons::ok);
      return false;
    }
    has_data_file = true;
  }
  if (!has_data_file) report_project_without_data(name, has_count, members.size());
  if (current_data_set) {
    const bool has_unsaved = has_unsaved_changes();
    prevesk_dataset_data_type with_members = *current_data_set;
    with_members.project_files.clear();
    for (const project_component& member : members) with_members.project_files.push_back(member);
    take_content(with_members);
    if (!has_unsaved) note_saved();
  }
  return true;
}

// Such a project changes the list of the data set that is open, even one whose first line is not a number. So damage
// looks like a project with an empty list.
void document_control::report_project_without_data(const std::string& name, bool has_count, std::size_t members) {
  std::string text = leaf_of(name) + (has_count ? " names no data file (.vki): "
                                                : " is not a project: its first line is not the number of its files; ");
  if (!current_data_set) return ui_.add_info_line(text + "no data set was opened.", icon_note);
  text +=
      (file_name.empty() ? "the unnamed data set" : leaf_of(file_name)) + " stays open, and its list of related files ";
  const std::size_t before = current_data_set->project_files.size();
  if (before == 0 && members == 0)
    text += "is still empty.";
  else
    text += "now has " + counted(members, "name") + ", " + std::to_string(before) + " before." +
            (keeps_history() ? " Undo restores it." : "");
  ui_.add_info_line(text, icon_note);
}

void document_control::ask_and_open_project() {
  if (current_data_set) {
    const std::uint64_t generation = generation_;
    const box_answer answer =
        ui_.message_box("Save VESK input file?",
                        "Opening an existing project will close the current VESK input file\r\n"
                        "if it contains a VKI file. Do you want to save the current VESK input file first?",
                        box_buttons::yes_no_cancel);
    if (answer == box_answer::cancel || is_replaced_since(generation, "No project was opened.")) return;
    if (answer == box_answer::yes) save();
  }
  const auto name = ui_.ask_file(project_dialog);
  if (!name) return;
  if (!open_project_file(*name)) form_.report_failure("Could not open specified file.", failure_kind::data);
}

} // namespace vesk
