// The functions of the main form that its parts need. Tests use the whole form.
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

  // Shows the text in a box "Error" and counts the failure.
  virtual void report_failure(const std::string& text) = 0;
  virtual void count_failure() = 0; // of a failure shown in another way
};

} // namespace vesk
