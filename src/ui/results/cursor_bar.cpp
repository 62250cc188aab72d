#include "ui/results/cursor_bar.h"

#include "results/measured_series.h"
#include "ui/guard.h"
#include "ui/measures.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QTimer>
#include <QToolButton>
#include <limits>

namespace vesk {

namespace {

constexpr int step_milliseconds = 50;
constexpr std::size_t most_steps = 400; // to play the whole period, 20 s

QString time_text(double date_time) {
  return QString::fromStdString(text_of_moment(date_time)).replace('T', ' ');
}

} // namespace

cursor_bar::cursor_bar(results_session& session, QWidget* parent)
    : QWidget(parent), session_(session), play_(new QToolButton), slider_(new QSlider(Qt::Horizontal)),
      time_(new QLabel), clock_(new QTimer(this)) {
  play_->setObjectName("PlayButton");
  play_->setCheckable(true);
  play_->setFocusPolicy(Qt::StrongFocus);
  slider_->setObjectName("TimeSlider");
  slider_->setAccessibleName("Time");
  slider_->setToolTip("The time shown on all pages. A click in a chart also moves it.");
  time_->setObjectName("TimeLabel");
  time_->setTextFormat(Qt::PlainText);
  time_->setMinimumWidth(time_->fontMetrics().horizontalAdvance("0000-00-00 00:00:00") + scaled(8, *this));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(play_);
  row->addWidget(slider_, 1);
  row->addWidget(time_);
  clock_->setInterval(step_milliseconds);
  connect(clock_, &QTimer::timeout, this, [this] { attempt([this] { step(); }); });
  connect(play_, &QToolButton::toggled, this, [this](bool) { show_playing(); });
  connect(slider_, &QSlider::valueChanged, this,
          [this](int position) { attempt([&] { session_.set_cursor_position(static_cast<std::size_t>(position)); }); });
  show_playing();
  show_results();
}

void cursor_bar::show_playing() {
  const bool plays = play_->isChecked();
  play_->setText(plays ? "Pause" : "Play");
  play_->setAccessibleName(play_->text());
  play_->setToolTip(plays ? "Stop moving the time" : "Move the time to the end of the results");
  if (!plays) return clock_->stop();
  if (slider_->value() == slider_->maximum()) slider_->setValue(0);
  clock_->start();
}

void cursor_bar::step() {
  const int last = slider_->maximum();
  const int stride = 1 + last / static_cast<int>(most_steps);
  slider_->setValue(std::min(slider_->value() + stride, last));
  if (slider_->value() == last) play_->setChecked(false);
}

void cursor_bar::show_results() {
  const results_file* file = session_.baseline_file();
  const QSignalBlocker quiet(slider_);
  const std::size_t times = file ? file->times().size() : 1;
  slider_->setMaximum(static_cast<int>(std::min<std::size_t>(times - 1, std::numeric_limits<int>::max())));
  slider_->setPageStep(std::max(1, slider_->maximum() / 20));
  for (QWidget* control : {static_cast<QWidget*>(play_), static_cast<QWidget*>(slider_)})
    control->setEnabled(times > 1);
  show_cursor();
}

void cursor_bar::show_cursor() {
  const QSignalBlocker quiet(slider_);
  slider_->setValue(static_cast<int>(session_.cursor_position()));
  time_->setText(session_.baseline_file() ? time_text(session_.cursor()) : QString());
}

} // namespace vesk
