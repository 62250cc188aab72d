#include "ui/entry_edit.h"

#include "ui/texts.h"

#include <QKeyEvent>

namespace vesk {

entry_edit::entry_edit(entry_field& field, QWidget* parent) : QLineEdit(parent), field_(field) {
  setObjectName(shown(field.name));
  setAccessibleName(shown(field.label));
  connect(this, &QLineEdit::editingFinished, this, [this] { take(); });
}

void entry_edit::show_field() {
  setText(shown(field_.text()));
  const QString reason = shown(field_.refusal());
  setStyleSheet(reason.isEmpty() ? QString() : QStringLiteral("QLineEdit { color: black; background: red; }"));
  const QString& text = reason.isEmpty() ? hint_ : reason;
  setToolTip(tool_tip(text));
  setAccessibleDescription(text);
}

void entry_edit::set_hint(const QString& hint) {
  hint_ = hint;
  show_field();
}

bool entry_edit::take() {
  const bool changed = text() != shown(field_.text());
  const bool accepted = field_.enter(stored(text()));
  setModified(false);
  if (changed) {
    show_field();
    emit entered();
  }
  return accepted;
}

// Escape first restores the text; only then does it close the dialog.
void entry_edit::keyPressEvent(QKeyEvent* event) {
  const bool edited = text() != shown(field_.text()) || !field_.refusal().empty();
  if (event->key() != Qt::Key_Escape || !edited) return QLineEdit::keyPressEvent(event);
  give_up();
}

void entry_edit::give_up() {
  field_.restore();
  show_field();
  emit given_up();
}

} // namespace vesk
