// The list of variables of a page that shows one at a time.
#pragma once

#include "viewer/results_session.h"

#include <QComboBox>
#include <optional>

namespace vesk {

class variable_box final : public QComboBox {
public:
  explicit variable_box(const QString& object_name);

  // Takes the session's list. Keeps the selection by name; initially the first variable chosen on the left.
  void show_variables(const results_session& session);
  std::optional<std::size_t> variable() const;             // index in the session's list
  std::string title(const results_session& session) const; // "Oxygen, mg/L"
};

} // namespace vesk
