#include "ui/enter_key.h"

#include <QAction>
#include <QPushButton>

namespace vesk {

bool press_focused_button(const QDialog& dialog, const QKeyEvent& event) {
  auto* button = qobject_cast<QPushButton*>(dialog.focusWidget());
  if (!button || (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter)) return false;
  button->click();
  return true;
}

void accept_by_ctrl_enter(QDialog& dialog) {
  for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* action = new QAction(&dialog);
    action->setShortcut(Qt::CTRL | enter);
    QObject::connect(action, &QAction::triggered, &dialog, &QDialog::accept);
    dialog.addAction(action);
  }
}

} // namespace vesk
