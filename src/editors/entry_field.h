// One field of a dialog that takes a date, a time or a number: the typed text and its value.
//
// A value that was not edited is returned bit for bit, even if its field shows it rounded.
#pragma once

#include "charts/cell.h"

#include <string>
#include <string_view>

namespace vesk {

class entry_field {
public:
  // Dates are whole date-time numbers (days since 30 December 1899), times fractions of a day.
  entry_field(std::string control, std::string caption, cell_type type)
      : name(std::move(control)), label(std::move(caption)), type_(std::move(type)) {}

  const std::string name;  // of the control
  const std::string label; // beside it

  void load(double value);
  void follow(double value); // like load, but counts as touched: set on behalf of the user
  // Accepts typed text; false: refused, and `refusal` says why. The text of the current value changes nothing.
  bool enter(std::string_view text);
  void restore(); // replaces a refused text with that of the current value

  double value() const { return value_; }
  const std::string& text() const { return text_; }
  const std::string& refusal() const { return refusal_; }        // empty: accepted
  bool touched() const { return touched_ || !refusal_.empty(); } // by the user, since the last load

private:
  cell_type type_;
  double value_ = 0;
  std::string value_text_, text_, refusal_; // text of the value; text as typed, if refused
  bool touched_ = false;
};

} // namespace vesk
