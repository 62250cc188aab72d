#include "app/outside_programs.h"

#include "platform/file_io.h"
#include "platform/program_paths.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace vesk {

namespace {

namespace fs = std::filesystem;

constexpr const char* link_heads[] = {"http://", "https://", "HTTP://", "HTTPS://"};

bool is_link(const std::string& text) {
  return std::ranges::any_of(link_heads, [&](const char* head) { return text.find(head) != std::string::npos; });
}

// A link with anything before "http" could have another scheme, for which the desktop may run a program.
bool may_be_opened(const std::string& text) {
  if (is_link(text)) return std::ranges::any_of(link_heads, [&](const char* head) { return text.starts_with(head); });
  std::string name = text;
  std::replace(name.begin(), name.end(), '\\', '/');
  const fs::path inside = fs::path("./" + name).lexically_normal();
  return inside.begin() != inside.end() && *inside.begin() != "..";
}

// A file in the folder. Its name may contain backslashes as separators.
std::string file_in(const std::string& folder, std::string name) {
  std::error_code ignored;
  if (!fs::exists(folder + name, ignored)) std::replace(name.begin(), name.end(), '\\', '/');
  return folder + name;
}

// Whether a file can be created in the folder. Creates one, since permission bits alone do not show it. Never writes to
// an existing file of the same name, which may be a link.
bool can_make_a_file_in(const std::string& folder) {
  const std::string probe = folder + "vesk.testcreate";
  unlink(probe.c_str());
  const file_descriptor file(open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  return file.is_open() && unlink(probe.c_str()) == 0;
}

} // namespace

outside_programs::outside_programs(user_interface& ui)
    : program_directory((vesk::program_directory() / "").string()),
      documentation_directory(vesk::documentation_directory().string()), ui_(ui) {}

void outside_programs::populate_documentation_menu() {
  if (!document_index) return;
  try {
    document_index->read(documentation_directory + "documentation.xml",
                         [this](const std::string& name, const std::string& file) {
                           ui_.add_documentation_item(name);
                           documentation_links[name] = file;
                         });
  } catch (const xml_error& error) {
    ui_.add_info_line(std::string("Unable to populate document menu") + error.what(), icon_plain);
  } catch (const xml_parse_error& error) {
    ui_.add_info_line(std::string("Caught exception populating document menu: ") + error.what(), icon_plain);
  } catch (...) {
    ui_.add_info_line("Caught unexpected exception populating document menu", icon_plain);
  }
}

void outside_programs::open_document(const std::string& caption) {
  const auto found = documentation_links.find(caption);
  if (found == documentation_links.end()) return;
  const std::string& text = found->second;
  if (!may_be_opened(text))
    return ui_.add_info_line("Cannot open \"" + text +
                                 "\": a document is a file in the documentation folder, or an http or https link.",
                             icon_failure);
  open_outside(is_link(text) ? text : file_in(documentation_directory, text), documentation_directory);
}

void outside_programs::open_user_guide() {
  const std::string guide = documentation_directory + "user-guide.html";
  if (!has_browser() && ui_.show_page(guide)) return;
  open_outside(guide, documentation_directory);
}

bool outside_programs::launch_process(const std::vector<std::string>& arguments) {
  return start_outside_program(arguments, {});
}

void outside_programs::start_post_processor(const std::string& command_line, const std::string& file_name,
                                            const std::string& setting) {
  std::vector<std::string> arguments = split_command_line(command_line);
  const std::string program = arguments.empty() ? "" : arguments.front();
  if (!file_name.empty()) arguments.push_back(file_name); // one argument, including blanks and quotes
  if (launch_process(arguments)) return;
  ui_.add_info_line((program.empty() ? "No post-processor is named." : "Cannot start \"" + program + "\".") +
                        " Name the post-processor in the setting " + setting + ".",
                    icon_failure);
  ui_.message_box("Error", "Could not create post-processor process.", box_buttons::ok);
}

void outside_programs::check_for_updates() {
  if (!can_make_a_file_in(program_directory)) {
    ui_.message_box("Insufficient permission",
                    "You do not have adequate permission to update this installation. \r\n"
                    "Please contact your computer system administrator. \r\n"
                    "You must have write access in the program directory \r\n" +
                        program_directory,
                    box_buttons::ok);
    return;
  }
  const box_answer answer = ui_.message_box("Check for updates now?",
                                            "This action will terminate vesk. All related programs \r\n"
                                            "must be shut down for the update to succeed. Are you \r\n"
                                            "sure that you wish to do this now?",
                                            box_buttons::yes_no);
  if (answer != box_answer::yes) return;
  const std::string updater = program_directory + "orlupdate.exe";
  if (start_outside_program({updater, "-i"}, program_directory))
    ui_.close_main_window();
  else
    ui_.message_box("Error", "Failed to launch " + updater + " -i", box_buttons::ok);
}

} // namespace vesk
