// The functions of the main form that its parts need. Tests use the whole form.
#pragma once

#include "app/user_interface.h"
#include "runs/run_status.h"

#include <string>

namespace vesk {

// Main thread only.
class main_form_services {
public:
  virtual ~main_form_services() = default;

  virtual command_conditions conditions() const = 0;
  virtual void update_menus() = 0;
  virtual void update_caption() = 0;

  // A file that the user named was opened or saved; a project, not its members.
  virtual void note_used_file(const std::string& name) = 0;

  // Checks that the catalogue can be opened; if not, asks once for another folder.
  virtual void check_database() = 0;

  // Shows the text in a box "Error" and notes it. `kind`: for programs that read the exit status.
  virtual void report_failure(const std::string& text, failure_kind kind) = 0;
  virtual void note_failure(const std::string& text, failure_kind kind) = 0; // that was shown in another way
};

} // namespace vesk
