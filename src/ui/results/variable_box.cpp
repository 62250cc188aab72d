#include "ui/results/variable_box.h"

#include "ui/texts.h"
#include "ui/wheel_guard.h"

#include <QSignalBlocker>

namespace vesk {

variable_box::variable_box(const QString& object_name) {
  setObjectName(object_name);
  setAccessibleName("Variable");
  setSizeAdjustPolicy(QComboBox::AdjustToContents);
  ignore_wheel(*this);
}

void variable_box::show_variables(const results_session& session) {
  const QSignalBlocker quiet(this);
  const QString before = currentText();
  clear();
  for (const named_choice& one : session.variables.names) addItem(shown(one.name));
  int position = findText(before);
  if (position < 0) {
    const auto chosen = session.variables.positions();
    position = chosen.empty() ? 0 : static_cast<int>(chosen.front());
  }
  setCurrentIndex(count() == 0 ? -1 : position);
  setEnabled(count() > 0);
}

std::optional<std::size_t> variable_box::variable() const {
  return currentIndex() < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(currentIndex()));
}

std::string variable_box::title(const results_session& session) const {
  if (!variable() || *variable() >= session.variables.names.size()) return {};
  const named_choice& one = session.variables.names[*variable()];
  return one.units.empty() ? one.name : one.name + ", " + one.units;
}

} // namespace vesk
