#include "accessible.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTabBar>
#include <QTabWidget>
#include <gtest/gtest.h>
#include <map>

namespace vesk {

namespace {

bool is_cut_off(const QWidget* control) {
  if (const auto* label = qobject_cast<const QLabel*>(control); label && label->wordWrap())
    return label->heightForWidth(label->width()) > label->height();
  const bool is_text = qobject_cast<const QLabel*>(control) || qobject_cast<const QAbstractButton*>(control);
  return is_text && (control->width() < control->minimumSizeHint().width() ||
                     control->height() < control->minimumSizeHint().height());
}

// The line inside a list or number field is announced by the field's name.
bool is_part_of_another(const QWidget* control) {
  return qobject_cast<const QLineEdit*>(control) && (qobject_cast<QComboBox*>(control->parentWidget()) ||
                                                     qobject_cast<QAbstractSpinBox*>(control->parentWidget()));
}

void expect_named(QWidget* window, QWidget* control) {
  if (!(control->focusPolicy() & Qt::TabFocus) || is_part_of_another(control) ||
      control->objectName().startsWith("qt_"))
    return;
  const QAccessibleInterface* face = QAccessible::queryAccessibleInterface(control);
  EXPECT_TRUE(face && !face->text(QAccessible::Name).isEmpty())
      << window->objectName().toStdString() << ": " << control->metaObject()->className() << " "
      << control->objectName().toStdString();
}

class letters {
public:
  explicit letters(const QWidget* window) : window_(window) {}

  void take(const QString& text) {
    const qsizetype at = text.indexOf('&');
    if (at < 0 || at + 1 >= text.size() || text[at + 1] == '&') return;
    const QChar letter = text[at + 1].toLower();
    EXPECT_EQ(taken_.count(letter), 0U) << window_->objectName().toStdString() << ": " << text.toStdString() << " and "
                                        << taken_[letter].toStdString();
    taken_[letter] = text;
  }

private:
  const QWidget* window_;
  std::map<QChar, QString> taken_;
};

void expect_accessible_as_shown(QWidget* window) {
  letters mnemonics(window);
  for (QWidget* control : window->findChildren<QWidget*>()) {
    if (!control->isVisible() || control->window() != window) continue;
    expect_named(window, control);
    const auto* label = qobject_cast<QLabel*>(control);
    if (!label || label->buddy()) mnemonics.take(control->property("text").toString());
    if (const auto* tabs = qobject_cast<QTabBar*>(control))
      for (int i = 0; i < tabs->count(); ++i) mnemonics.take(tabs->tabText(i));
  }
}

} // namespace

void expect_accessible(QWidget* window) {
  auto* pages = window->findChild<QTabWidget*>();
  if (!pages) return expect_accessible_as_shown(window);
  for (int page = pages->count(); page-- > 0;) {
    pages->setCurrentIndex(page);
    expect_accessible_as_shown(window);
  }
}

void expect_in_reach_as_shown(QWidget* window) {
  for (QWidget* control : window->findChildren<QWidget*>()) {
    const bool is_known = qobject_cast<QLabel*>(control) || qobject_cast<QAbstractButton*>(control) ||
                          qobject_cast<QLineEdit*>(control) || qobject_cast<QComboBox*>(control) ||
                          qobject_cast<QAbstractItemView*>(control);
    if (!is_known || !control->isVisible() || control->window() != window || control->objectName().startsWith("qt_") ||
        control->objectName().startsWith("ScrollLeft") || control->objectName().startsWith("ScrollRight"))
      continue;
    const std::string name = window->objectName().toStdString() + ": " + control->metaObject()->className() + " " +
                             control->objectName().toStdString() + " \"" +
                             control->property("text").toString().toStdString() + "\"";
    const QRect place(control->mapTo(window, QPoint()), control->size());
    EXPECT_TRUE(window->rect().contains(place))
        << name << " is at " << place.x() << ", " << place.y() << ", " << place.width() << " by " << place.height();
    EXPECT_TRUE(control->visibleRegion().boundingRect().size() == control->size() ||
                qobject_cast<QAbstractItemView*>(control))
        << name << " is covered";
    EXPECT_FALSE(is_cut_off(control)) << name;
  }
}

} // namespace vesk
