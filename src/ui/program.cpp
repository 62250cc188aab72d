#include "ui/program.h"

#include "engine/stack_thread.h"
#include "ui/appearance.h"
#include "ui/guard.h"
#include "ui/images.h"
#include "ui/texts.h"

#include <QApplication>
#include <QEvent>
#include <clocale>
#include <cstdlib>

namespace vesk {

namespace {

// Posts an event, so that the event loop serves the workers' calls.
class synchronize_bell final : public QObject {
public:
  synchronize_bell() {
    WakeMainThread = [this] { QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority); };
  }
  ~synchronize_bell() override { WakeMainThread = nullptr; }

  bool event(QEvent* event) override {
    if (event->type() != QEvent::User) return QObject::event(event);
    attempt([] { CheckSynchronize(); });
    return true;
  }
};

} // namespace

void prepare_application(QApplication& application) {
  // Qt uses the user's locale; numbers in files and from engines have a decimal point.
  std::setlocale(LC_NUMERIC, "C");
  QLocale::setDefault(QLocale::c());
  QApplication::setApplicationName("vesk");
  QApplication::setApplicationDisplayName(QString());
  QApplication::setApplicationVersion(VESK_VERSION);
  QGuiApplication::setDesktopFileName("vesk");
  QApplication::setQuitOnLastWindowClosed(false); // a dialog may close while the main window is minimised
  QApplication::setWindowIcon(program_image());
  follow_the_desktop(application);
}

program::program(QApplication& application, const options& wanted)
    : application_(application), bell_(std::make_unique<synchronize_bell>()),
      window_(std::make_unique<main_window>(wanted.settings_file)) {
  splash_ = std::make_unique<splash_form>(wanted.splash_time, [this] { window_->show(); });
  window_->set_start(wanted.arguments, splash_.get());
  splash_->show();
  signals_ = std::make_unique<end_signals>([this] { window_->close_main_window(); });
}

program::~program() = default;

void program::run() {
  application_.exec();
  window_->form().save_settings();
  std::fflush(stdout);
  std::fflush(stderr); // no other stream: a worker may hold its lock
  // Nothing is destroyed: a worker may still be using it.
  std::_Exit(window_->form().return_code());
}

} // namespace vesk
