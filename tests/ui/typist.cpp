#include "typist.h"

#include "driver.h"
#include "ui/tree_view.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeySequence>
#include <QTableView>
#include <QTest>
#include <QTimer>

namespace vesk {

namespace {

constexpr int tick_time = 8;       // milliseconds
constexpr int patience = 1500;     // ticks for one step
constexpr int painting_ticks = 20; // until a window has its final appearance

QWidget* find_window(const std::string& name) {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->isVisible() && window->objectName().toStdString() == name) return window;
  return nullptr;
}

// Where a key goes now; null until the window accepts keys.
QWidget* target_in(const std::string& name) {
  QWidget* window = find_window(name);
  if (!window) return nullptr;
  if (QWidget* popup = QApplication::activePopupWidget()) return popup->focusWidget() ? popup->focusWidget() : popup;
  if (QApplication::activeWindow() != window) {
    window->activateWindow();
    return nullptr;
  }
  return window->focusWidget() ? window->focusWidget() : window;
}

void press_keys(QWidget* target, const QKeySequence& keys) {
  QTest::keyClick(target, keys[0].key(), keys[0].keyboardModifiers());
}

} // namespace

typist& typist::in(const char* window) {
  window_ = window;
  return *this;
}

typist& typist::add(std::string name, std::function<bool(QWidget*)> ready, std::function<void(QWidget*)> act) {
  steps_.push_back({std::move(name), window_, std::move(ready), std::move(act)});
  return *this;
}

typist& typist::keys(const char* sequence, int times) {
  for (int i = 0; i < times; ++i)
    add(sequence, {}, [keys = QKeySequence(sequence)](QWidget* target) { press_keys(target, keys); });
  return *this;
}

typist& typist::text(const QString& typed) {
  for (const QChar letter : typed)
    add("\"" + typed.toStdString() + "\"", {}, [letter](QWidget* target) {
      const bool plain = letter.unicode() < 0x80;
      QTest::sendKeyEvent(QTest::Click, target, plain ? QTest::asciiToKey(letter.toLatin1()) : Qt::Key_unknown,
                          QString(letter), Qt::NoModifier);
    });
  return *this;
}

typist& typist::tab_to(std::string name, std::function<bool(const QWidget*)> is_it) {
  return add("to " + name,
             [is_it = std::move(is_it)](QWidget* target) {
               if (is_it(target)) return true;
               press_keys(target, QKeySequence(qobject_cast<QTableView*>(target) ? "F6" : "Tab"));
               return false;
             },
             {});
}

typist& typist::go_to(const char* control) {
  return tab_to(control, [name = QString(control)](const QWidget* target) { return target->objectName() == name; });
}

typist& typist::leave_by(const char* button) {
  tab_to(button, [text = QString(button)](const QWidget* target) {
    const auto* found = qobject_cast<const QAbstractButton*>(target);
    return found && found->text().remove('&') == text;
  });
  return keys("Space");
}

namespace {

QWidget* control_in(const QWidget* target, const char* name) {
  auto* control = target->window()->findChild<QWidget*>(name);
  return control && control->isVisible() && control->isEnabled() ? control : nullptr;
}

QAbstractButton* button_in(const QWidget* target, const QString& text) {
  for (auto* button : target->window()->findChildren<QAbstractButton*>())
    if (button->text().remove('&') == text && button->isVisible() && button->isEnabled()) return button;
  return nullptr;
}

} // namespace

typist& typist::click(const char* control) {
  return add(
      std::string("click on ") + control, [control](QWidget* target) { return control_in(target, control); },
      [control](QWidget* target) {
        QWidget* clicked = control_in(target, control);
        const bool is_box = qobject_cast<QAbstractButton*>(clicked); // a check box only accepts clicks on its text
        QTest::mouseClick(clicked, Qt::LeftButton, {}, is_box ? QPoint(8, clicked->height() / 2) : QPoint());
      });
}

typist& typist::click_cell(const char* grid, int row, int column) {
  const auto find = [grid](QWidget* target) { return qobject_cast<QTableView*>(control_in(target, grid)); };
  return add(
      std::string("click in ") + grid,
      [=](QWidget* target) { return find(target) && find(target)->model()->rowCount() > row; },
      [=](QWidget* target) {
        QTableView* view = find(target);
        const QModelIndex index = view->model()->index(row, column);
        view->scrollTo(index);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
      });
}

typist& typist::click_node(const char* tree, std::size_t group, std::optional<std::size_t> item) {
  const auto find = [tree](QWidget* target) { return qobject_cast<tree_view*>(control_in(target, tree)); };
  const auto index = [=](QWidget* target) {
    return static_cast<const tree_model*>(find(target)->model())->index_of({group, item});
  };
  return add(
      std::string("click in ") + tree, [=](QWidget* target) { return find(target) && index(target).isValid(); },
      [=](QWidget* target) {
        find(target)->scrollTo(index(target));
        QTest::mouseClick(find(target)->viewport(), Qt::LeftButton, {},
                          find(target)->visualRect(index(target)).center());
      });
}

typist& typist::press(const char* button) {
  return add(
      std::string("press ") + button, [button](QWidget* target) { return button_in(target, button); },
      [button](QWidget* target) { QTest::mouseClick(button_in(target, button), Qt::LeftButton); });
}

typist& typist::until(const std::function<bool()>& done) {
  return add("waiting", [done](QWidget*) { return done(); }, {});
}

typist& typist::check(const std::function<void()>& look) {
  return add("a look", {}, [look](QWidget*) { look(); });
}

// Waits some ticks for pending painting.
typist& typist::picture(const char* name) {
  return add(
      std::string("picture ") + name, [ticks = 0](QWidget*) mutable { return ++ticks > painting_ticks; },
      [name = QString(name)](QWidget* target) { keep_picture(target->window(), name); });
}

// Schedules the next tick before pressing a key: a key may open a dialog, which blocks until it is closed.
void typist::tick() {
  if (over_) return;
  if (steps_.empty()) {
    over_ = true;
    return;
  }
  QTimer::singleShot(tick_time, qApp, [this] { tick(); });
  QWidget* target = target_in(steps_.front().window);
  if (!target || (steps_.front().ready && !steps_.front().ready(target))) {
    if (++waited_ > patience) give_up("took too long");
    return;
  }
  waited_ = 0;
  const step now = std::move(steps_.front());
  steps_.pop_front();
  if (now.act) now.act(target);
}

void typist::give_up(const std::string& why) {
  over_ = true;
  const QWidget* front = QApplication::activeWindow();
  ADD_FAILURE() << "in " << steps_.front().window << ": " << steps_.front().name << " " << why << "; in front is "
                << (front ? front->objectName().toStdString() : "nothing");
  if (front) keep_picture(QApplication::activeWindow(), "given_up");
  steps_.clear();
  while (QWidget* modal = QApplication::activeModalWidget()) {
    modal->hide(); // ends its loop, even if it would refuse to close
    if (modal == QApplication::activeModalWidget()) break;
  }
}

void typist::work() {
  over_ = false;
  QTimer::singleShot(tick_time, qApp, [this] { tick(); });
  while (!over_) QTest::qWait(tick_time);
}

} // namespace vesk
