// The base of all forms: a dialog's state, texts and decisions, without its window.
//
// Each form exists once, for the life of the program. Its window is created when it is first shown, and kept.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

class form {
public:
  form() = default;
  form(const form&) = delete;
  form& operator=(const form&) = delete;
  virtual ~form() = default;

  virtual std::string_view class_name() const = 0; // names the window: "TConstantsForm"
  virtual std::string caption() const = 0;

  virtual void FormShow() {} // before the window is shown; fills in its content

  // Called before the window closes, by OK or otherwise; false: it stays open.
  virtual bool FormCloseQuery(bool /*by_ok*/) { return true; }

  // The current data set has been replaced or changed. Called only while the form is shown.
  virtual void data_set_replaced() {}
};

} // namespace vesk
