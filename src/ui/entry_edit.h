// The control of an entry_field: a line that shows why its entry was refused.
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
  bool take();                        // passes the text to the form; false: refused
  void give_up();                     // restores the text of the form's value

signals:
  void entered();  // by the user, accepted or not
  void given_up(); // the text was restored

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  entry_field& field_;
  QString hint_;
};

} // namespace vesk
