// Progress and priority of a job: InfoPanel with its bar and labels, and the priority track bar.
#pragma once

#include <QWidget>
#include <chrono>
#include <functional>
#include <string>

class QLabel;
class QProgressBar;
class QPushButton;
class QSlider;

namespace vesk {

class progress_panel final : public QWidget {
public:
  // `priority_moved` is called with the position, 0 to 6, only when the user moves the track bar; `cancel` when the
  // user cancels the job.
  progress_panel(QWidget* parent, std::function<void(int)> priority_moved, std::function<void()> cancel);

  // Drawn at once, since the main thread may be busy with the work; calls in quick succession are not all drawn.
  void set_progress(int percent);
  void set_info(const std::string& text);
  void set_time_remaining(const std::string& text);
  void show_cancel(bool visible); // each showing allows one press
  void show_priority(bool visible);
  void set_priority_position(int position);

private:
  QProgressBar* StatusProgressBar;
  QLabel* InfoLabel;
  QLabel* TimeRemainingLabel;
  QPushButton* CancelButton;
  QLabel* MinPriorityLabel;
  QSlider* PriorityTrackBar;
  QLabel* MaxPriorityLabel;
  std::chrono::steady_clock::time_point painted_; // the bar, by set_progress
};

} // namespace vesk
