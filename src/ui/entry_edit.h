// The control of an entry_field: a line that shows what is wrong with it.
#pragma once

#include "editors/entry_field.h"

#include <QLineEdit>
#include <functional>

namespace vesk {

class entry_edit final : public QLineEdit {
  Q_OBJECT

public:
  explicit entry_edit(entry_field& field, QWidget* parent = nullptr);

  const entry_field& field() const { return field_; }
  void set_hint(const QString& hint); // shown unless the entry is refused
  void show_field();                  // as the form has it
  bool take();                        // what is typed goes to the form; false: refused

signals:
  void entered();  // by the user, accepted or not
  void given_up(); // what was typed

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  entry_field& field_;
  QString hint_;
};

} // namespace vesk
