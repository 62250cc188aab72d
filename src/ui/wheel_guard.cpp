#include "ui/wheel_guard.h"

#include <QEvent>
#include <QWidget>

namespace vesk {

namespace {

class wheel_guard final : public QObject {
public:
  using QObject::QObject;

  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::Wheel) return false;
    event->ignore();
    return true;
  }
};

} // namespace

void ignore_wheel(QWidget& control) {
  control.setFocusPolicy(Qt::StrongFocus); // otherwise the wheel would focus it
  control.installEventFilter(new wheel_guard(&control));
}

} // namespace vesk
