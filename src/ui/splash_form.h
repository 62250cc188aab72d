// TSplashForm: the splash screen.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

namespace vesk {

class splash_form final : public QWidget {
public:
  // `show_main_window` is called once, `milliseconds` after construction or at an earlier click or key; then the splash
  // closes.
  splash_form(int milliseconds, std::function<void()> show_main_window);

protected:
  void paintEvent(QPaintEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  QTimer HideTimer;
};

} // namespace vesk
