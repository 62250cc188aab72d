#include "editors/entry_field.h"

#include "dataset/moment.h"

#include <cmath>

namespace vesk {

void entry_field::load(double value) {
  value_ = value;
  refusal_.clear();
  touched_ = false;
  double cell = value;
  if (type_.kind == cell_kind::date) cell = std::floor(value) + date_time_origin;
  if (type_.kind == cell_kind::time) cell = std::round(value * seconds_per_day);
  text_ = entry_text(type_, cell);
}

bool entry_field::enter(std::string_view text) {
  if (text == text_) return refusal_.empty();
  const cell_entry entry = read_entry(type_, text);
  touched_ = true;
  refusal_ = entry.refusal;
  if (!entry.accepted()) {
    text_ = text;
    return false;
  }
  value_ = expression_number(type_, entry.value);
  text_ = entry_text(type_, entry.value);
  return true;
}

} // namespace vesk
