// Everything that the main form opens outside the program: documents, the user guide, post-processors, the updater.
//
// The program does not wait for any of them. Main thread only.
#pragma once

#include "app/documentation.h"
#include "app/user_interface.h"
#include "platform/processes.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vesk {

class outside_programs {
public:
  explicit outside_programs(user_interface& ui);

  // Both folders end in a separator.
  std::string program_directory;
  std::string documentation_directory;                    // for the index and its documents
  std::unique_ptr<documentation_index> document_index;    // null: the menu stays empty
  std::map<std::string, std::string> documentation_links; // by menu caption: a file in that folder, or a link

  // Start a program (arguments, working folder; false: could not be started) and open a document (file or link,
  // working folder). Tests replace them.
  std::function<bool(const std::vector<std::string>&, const std::filesystem::path&)> start_outside_program =
      start_program;
  std::function<void(const std::string&, const std::filesystem::path&)> open_outside = open_with_desktop;
  std::function<bool()> has_browser = desktop_has_browser;

  void populate_documentation_menu(); // an unusable index only gives an info line
  void open_document(const std::string& caption);
  void open_user_guide(); // in the browser; where there is none, in a window of this program
  // `command_line`: split at blanks outside quotes. `file_name`, unless empty, is passed as one more argument.
  // If it cannot be started, an info line names it and where to change it: "PostProcessor in FILE".
  void start_post_processor(const std::string& command_line, const std::string& file_name, const std::string& setting);
  bool launch_process(const std::vector<std::string>& arguments); // the program first
  void check_for_updates();                                       // closes the main window if the updater has started

private:
  user_interface& ui_;
};

} // namespace vesk
