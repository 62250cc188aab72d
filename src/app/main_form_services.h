// What the parts of the main form need from the form itself. Tests use the whole form.
#pragma once

#include "app/user_interface.h"

#include <string>

namespace vesk {

// Main thread only.
class main_form_services {
public:
  virtual ~main_form_services() = default;

  virtual command_conditions conditions() const = 0;
  virtual void update_menus() = 0;
  virtual void update_caption() = 0;

  // Checks that the catalogue can be opened; if not, asks once for another folder.
  virtual void check_database() = 0;

  // Shows the text in a box "Error" and counts it.
  virtual void report_failure(const std::string& text) = 0;
  virtual void count_failure() = 0; // of a failure that was shown in another way
};

} // namespace vesk
