// How far a job is, and how hard it may work: InfoPanel with its bar and labels, and the priority track bar.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

class QLabel;
class QProgressBar;
class QSlider;

namespace vesk {

class progress_panel final : public QWidget {
public:
  // `priority_moved` is called with the position, 0 to 6, when the user moves the track bar, and only then.
  progress_panel(QWidget* parent, std::function<void(int)> priority_moved);

  void set_progress(int percent); // drawn at once: the main thread may be busy with what it tells of
  void set_info(const std::string& text);
  void set_time_remaining(const std::string& text);
  void show_priority(bool visible);
  void set_priority_position(int position);

private:
  QProgressBar* StatusProgressBar;
  QLabel* InfoLabel;
  QLabel* TimeRemainingLabel;
  QLabel* MinPriorityLabel;
  QSlider* PriorityTrackBar;
  QLabel* MaxPriorityLabel;
};

} // namespace vesk
