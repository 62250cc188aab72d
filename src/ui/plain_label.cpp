#include "ui/plain_label.h"

#include "ui/texts.h"

#include <QAccessible>
#include <QLabel>

namespace vesk {

QLabel* plain_label(const std::string& name) {
  auto* label = new QLabel;
  label->setObjectName(shown(name));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

void show_text(QLabel& label, const std::string& text) {
  label.setText(label.buddy() ? without_mnemonics(shown(text)) : shown(text));
  label.setVisible(!text.empty());
}

void announce(QLabel& label, const std::string& text) {
  const QString message = shown(text);
  const bool is_new = label.text() != message;
  label.setText(message);
  if (!is_new || message.isEmpty()) return;
  QAccessibleEvent alert(&label, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}

} // namespace vesk
