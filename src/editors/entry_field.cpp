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
  value_text_ = text_ = entry_text(type_, cell);
}

void entry_field::follow(double value) {
  load(value);
  touched_ = true;
}

bool entry_field::enter(std::string_view text) {
  if (text == text_) return refusal_.empty();
  refusal_.clear();
  text_ = text;
  cell_entry entry;
  if (text != value_text_) entry = read_entry(type_, text);
  refusal_ = std::move(entry.refusal);
  if (!refusal_.empty()) return false;
  touched_ = true;
  if (text == value_text_) return true;
  value_ = expression_number(type_, entry.value);
  // A duration keeps its unit: "1 s" would be 1.1574074074074073e-05 days.
  if (!type_.is_duration) text_ = entry_text(type_, entry.value);
  value_text_ = text_;
  return true;
}

void entry_field::restore() {
  text_ = value_text_;
  refusal_.clear();
}

} // namespace vesk
