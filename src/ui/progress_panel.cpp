#include "ui/progress_panel.h"

#include "ui/elided_text.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <algorithm>

namespace vesk {

namespace {

constexpr int normal_position = 3, highest_position = 6;
constexpr auto paint_interval = std::chrono::milliseconds(30);

} // namespace

progress_panel::progress_panel(QWidget* parent, std::function<void(int)> priority_moved, std::function<void()> cancel)
    : QWidget(parent), StatusProgressBar(new QProgressBar(this)), InfoLabel(new elided_label(this)),
      TimeRemainingLabel(new elided_label(this)), CancelButton(new QPushButton("Cancel", this)),
      MinPriorityLabel(new QLabel("Stop", this)), PriorityTrackBar(new QSlider(Qt::Horizontal, this)),
      MaxPriorityLabel(new QLabel("Turbo", this)) {
  setObjectName("InfoPanel");
  StatusProgressBar->setObjectName("StatusProgressBar");
  StatusProgressBar->setAccessibleName("Progress");
  StatusProgressBar->setRange(0, 100);
  StatusProgressBar->setValue(0);
  StatusProgressBar->setTextVisible(false);
  InfoLabel->setObjectName("InfoLabel");
  TimeRemainingLabel->setObjectName("TimeRemainingLabel");
  CancelButton->setObjectName("CancelButton");
  CancelButton->setToolTip("Cancel the running job");
  CancelButton->setAutoDefault(false);
  connect(CancelButton, &QPushButton::clicked, this, [this, cancel = std::move(cancel)] {
    CancelButton->setEnabled(false); // cancel has been requested
    cancel();
  });
  MinPriorityLabel->setObjectName("MinPriorityLabel");
  MaxPriorityLabel->setObjectName("MaxPriorityLabel");
  PriorityTrackBar->setObjectName("PriorityTrackBar");
  PriorityTrackBar->setAccessibleName("Priority of the model");
  PriorityTrackBar->setToolTip("Priority of the model, from stopped to highest");
  PriorityTrackBar->setRange(0, highest_position);
  PriorityTrackBar->setValue(normal_position);
  PriorityTrackBar->setPageStep(1);
  PriorityTrackBar->setTracking(false); // a drag is one change, at its end
  PriorityTrackBar->setTickPosition(QSlider::TicksBelow);
  PriorityTrackBar->setTickInterval(1);
  PriorityTrackBar->setMaximumWidth(scaled(220, *this));
  connect(PriorityTrackBar, &QSlider::valueChanged, this, std::move(priority_moved));

  auto* row = new QHBoxLayout(this);
  const int margin = scaled(6, *this);
  row->setContentsMargins(margin, margin / 2, margin, margin / 2);
  row->addWidget(StatusProgressBar, 2);
  row->addWidget(InfoLabel, 3);
  row->addWidget(TimeRemainingLabel, 2);
  row->addWidget(CancelButton);
  row->addWidget(MinPriorityLabel);
  row->addWidget(PriorityTrackBar, 1);
  row->addWidget(MaxPriorityLabel);
  // Nothing moves when texts and the track bar appear or disappear.
  for (QLabel* label : {InfoLabel, TimeRemainingLabel})
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  for (QWidget* part : {static_cast<QWidget*>(CancelButton), static_cast<QWidget*>(MinPriorityLabel),
                        static_cast<QWidget*>(PriorityTrackBar), static_cast<QWidget*>(MaxPriorityLabel)}) {
    QSizePolicy policy = part->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    part->setSizePolicy(policy);
  }
  setMinimumHeight(PriorityTrackBar->sizeHint().height() + margin);
  show_cancel(false);
  show_priority(false);
}

void progress_panel::set_progress(int percent) {
  const int position = std::clamp(percent, 0, 100);
  if (position == StatusProgressBar->value()) return;
  StatusProgressBar->setUpdatesEnabled(false); // it would repaint at each change
  StatusProgressBar->setValue(position);
  StatusProgressBar->setTextVisible(position > 0);
  StatusProgressBar->setUpdatesEnabled(true);
  const auto now = std::chrono::steady_clock::now();
  if (now - painted_ < paint_interval) return; // the event loop repaints
  painted_ = now;
  StatusProgressBar->repaint(); // the event loop may be waiting for this work
}

void progress_panel::set_info(const std::string& text) {
  InfoLabel->setText(shown(text));
}

void progress_panel::set_time_remaining(const std::string& text) {
  TimeRemainingLabel->setText(shown(text));
}

void progress_panel::show_cancel(bool visible) {
  if (visible != CancelButton->isHidden()) return;
  CancelButton->setEnabled(visible);
  CancelButton->setVisible(visible);
}

void progress_panel::show_priority(bool visible) {
  for (QWidget* part : {static_cast<QWidget*>(MinPriorityLabel), static_cast<QWidget*>(PriorityTrackBar),
                        static_cast<QWidget*>(MaxPriorityLabel)})
    part->setVisible(visible);
}

void progress_panel::set_priority_position(int position) {
  const QSignalBlocker by_the_program(PriorityTrackBar);
  PriorityTrackBar->setValue(position);
}

} // namespace vesk
