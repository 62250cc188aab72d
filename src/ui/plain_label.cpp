#include "ui/plain_label.h"

#include "ui/texts.h"

#include <QAccessible>
#include <QLabel>

namespace vesk {

namespace {

// Splitters and scroll areas ignore the height of wrapped text.
class broken_lines final : public QLabel {
public:
  void take_height() {
    if (!text().isEmpty()) setMinimumHeight(heightForWidth(width())); // an empty label may keep one line
  }

protected:
  void resizeEvent(QResizeEvent* event) override {
    QLabel::resizeEvent(event);
    take_height();
  }
};

} // namespace

QLabel* plain_label(const std::string& name) {
  auto* label = new broken_lines;
  label->setObjectName(shown(name));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

void show_text(QLabel& label, const std::string& text) {
  label.setText(label.buddy() ? without_mnemonics(shown(text)) : shown(text));
  if (auto* broken = dynamic_cast<broken_lines*>(&label)) broken->take_height();
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
