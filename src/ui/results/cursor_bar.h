// The time cursor of the results window: a slider over the times of the baseline, step buttons, and play.
#pragma once

#include "viewer/results_session.h"

#include <QWidget>

class QLabel;
class QSlider;
class QTimer;
class QToolButton;

namespace vesk {

class cursor_bar final : public QWidget {
public:
  cursor_bar(results_session& session, QWidget* parent);

  void show_results();
  void show_cursor();

private:
  void step();
  void show_playing();

  results_session& session_;
  QToolButton* play_;
  QSlider* slider_;
  QLabel* time_;
  QTimer* clock_;
};

} // namespace vesk
