#include "ui/splash_form.h"

#include "app/main_form.h"
#include "ui/guard.h"
#include "ui/images.h"
#include "ui/texts.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

namespace vesk {

namespace {

constexpr int picture_width = 720, picture_height = 540;

} // namespace

splash_form::splash_form(int milliseconds, std::function<void()> show_main_window)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
  setObjectName("SplashForm");
  setFocusPolicy(Qt::StrongFocus);
  setWindowTitle(shown(TPreveskMainForm::application_title));
  const QSize room = QGuiApplication::primaryScreen()->availableGeometry().size();
  setFixedSize(QSize(picture_width, picture_height)
                   .scaled(room, Qt::KeepAspectRatio)
                   .boundedTo({picture_width, picture_height}));
  move(QGuiApplication::primaryScreen()->availableGeometry().center() - rect().center());
  HideTimer.setObjectName("HideTimer");
  HideTimer.setSingleShot(true);
  HideTimer.setTimerType(Qt::PreciseTimer);
  connect(&HideTimer, &QTimer::timeout, this, [this, show_main_window = std::move(show_main_window)] {
    attempt(show_main_window);
    close();
  });
  HideTimer.start(milliseconds);
}

// Only an active window receives keys.
void splash_form::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  activateWindow();
  setFocus();
}

void splash_form::mousePressEvent(QMouseEvent*) {
  if (HideTimer.isActive()) HideTimer.start(0);
}

void splash_form::keyPressEvent(QKeyEvent*) {
  if (HideTimer.isActive()) HideTimer.start(0);
}

void splash_form::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.scale(width() / double(picture_width), height() / double(picture_height));
  draw_splash(painter, QRect(0, 0, picture_width, picture_height));
  QFont font = painter.font();
  font.setPixelSize(18); // to match the picture, not the desktop
  painter.setFont(font);
  painter.setPen(Qt::white);
  painter.drawText(QRect(48, 470, 624, 40), Qt::AlignLeft | Qt::AlignVCenter,
                   "Version " + QCoreApplication::applicationVersion());
}

} // namespace vesk
