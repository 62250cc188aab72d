#include "ui/mnemonics.h"

#include <QAbstractButton>
#include <QLabel>
#include <QVector>

namespace vesk {

namespace {

QString text_of(const QWidget* control) {
  if (const auto* label = qobject_cast<const QLabel*>(control)) return label->buddy() ? label->text() : QString();
  const auto* button = qobject_cast<const QAbstractButton*>(control);
  return button ? button->text() : QString();
}

bool has_own_keys(const QString& text) {
  return text.isEmpty() || text == "OK" || text == "Cancel";
}

// Position of the letter; -1: all letters are taken.
qsizetype free_letter(const QString& text, const QString& taken) {
  const auto is_free = [&](qsizetype i) { return text[i].isLetter() && !taken.contains(text[i].toLower()); };
  for (qsizetype i = 0; i < text.size(); ++i)
    if ((i == 0 || text[i - 1] == ' ') && is_free(i)) return i;
  for (qsizetype i = 0; i < text.size(); ++i)
    if (is_free(i)) return i;
  return -1;
}

} // namespace

void give_mnemonics(QWidget& page, QString taken) {
  for (auto* label : page.findChildren<QLabel*>()) // a letter does not reach a field through the box around it
    if (const QWidget* field = label->buddy(); field && field->focusProxy()) label->setBuddy(field->focusProxy());
  QVector<QWidget*> without;
  for (QWidget* control : page.findChildren<QWidget*>()) {
    const QString text = text_of(control);
    const qsizetype at = text.indexOf('&');
    if (at >= 0 && at + 1 < text.size())
      taken += text[at + 1].toLower();
    else if (!has_own_keys(text))
      without << control;
  }
  for (QWidget* control : without) {
    QString text = text_of(control);
    const qsizetype at = free_letter(text, taken);
    if (at < 0) continue;
    taken += text[at].toLower();
    control->setProperty("text", text.insert(at, '&'));
  }
}

} // namespace vesk
