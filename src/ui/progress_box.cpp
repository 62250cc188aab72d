#include "ui/progress_box.h"

#include "ui/guard.h"
#include "ui/measures.h"
#include "ui/questions.h"
#include "ui/texts.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace vesk {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds before_the_box(150);                 // a box that appears and disappears at once would flicker
constexpr int tick_time = 30, patience_after_cancel = 2000; // milliseconds

// Shared by both threads; freed by the last one to end.
class background_work final : public work_progress {
public:
  explicit background_work(std::function<void(work_progress&)> work) : work_(std::move(work)) {}

  void run() noexcept { // on the worker thread
    std::exception_ptr failure;
    try {
      work_(*this);
    } catch (...) {
      failure = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    failure_ = failure;
    has_ended_ = true;
    news_.notify_all();
  }

  bool is_cancelled() const override { return is_cancelled_; }
  void percent_done(int percent) override { percent_ = percent; }
  void on_main_thread(std::function<void()> call) override {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
  }

  // Main thread.
  int percent() const { return percent_; } // -1: unknown
  void cancel() { is_cancelled_ = true; }
  bool has_ended() const {
    const std::lock_guard lock(mutex_);
    return has_ended_;
  }
  void wait(milliseconds longest) {
    std::unique_lock lock(mutex_);
    news_.wait_for(lock, longest, [this] { return has_ended_; });
  }
  void make_calls() {
    std::vector<std::function<void()>> calls;
    {
      const std::lock_guard lock(mutex_);
      calls.swap(calls_);
    }
    for (const auto& call : calls) attempt(call);
  }
  void rethrow_failure() const { // after the end
    if (failure_) std::rethrow_exception(failure_);
  }

private:
  const std::function<void(work_progress&)> work_;
  std::atomic<bool> is_cancelled_{false};
  std::atomic<int> percent_{-1};
  mutable std::mutex mutex_;
  std::condition_variable news_;
  bool has_ended_ = false;                   // guarded by mutex_
  std::exception_ptr failure_;               // guarded by mutex_; constant after the end
  std::vector<std::function<void()>> calls_; // guarded by mutex_
};

class progress_box final : public QDialog {
public:
  progress_box(QWidget* parent, const std::string& what, background_work& work)
      : QDialog(parent), work_(work), what_(new QLabel), bar_(new QProgressBar), cancel_(new QPushButton("Cancel")) {
    setObjectName("progress_box");
    setWindowTitle("Please wait");
    what_->setObjectName("WhatLabel");
    what_->setTextFormat(Qt::PlainText);
    what_->setWordWrap(true);
    what_->setText(shown(what + "..."));
    bar_->setObjectName("ProgressBar");
    bar_->setAccessibleName(shown(what));
    bar_->setRange(0, 0);
    cancel_->setObjectName("CancelButton");
    auto* column = new QVBoxLayout(this);
    column->addWidget(what_);
    column->addWidget(bar_);
    column->addWidget(cancel_, 0, Qt::AlignRight);
    setMinimumWidth(scaled(360, *this));
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
    connect(&timer_, &QTimer::timeout, this, [this] { tick(); });
    timer_.start(tick_time);
  }

  // Escape, Cancel and the close button. The box stays open until the work has ended.
  void reject() override {
    if (work_.is_cancelled()) return;
    work_.cancel();
    since_cancel_.start();
    what_->setText("Cancelling...");
    cancel_->setEnabled(false);
  }

private:
  void tick() {
    work_.make_calls();
    if (work_.percent() >= 0) {
      bar_->setRange(0, 100);
      bar_->setValue(work_.percent());
    }
    if (work_.has_ended()) return done(Accepted);
    if (since_cancel_.isValid() && since_cancel_.elapsed() > patience_after_cancel) done(Rejected);
  }

  background_work& work_;
  QLabel* what_;
  QProgressBar* bar_;
  QPushButton* cancel_;
  QTimer timer_;
  QElapsedTimer since_cancel_; // valid once Cancel was pressed
};

// A thread that may outlive the function that started it.
struct work_thread {
  std::thread thread;
  ~work_thread() {
    if (thread.joinable()) thread.detach();
  }
};

class wait_cursor {
public:
  wait_cursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~wait_cursor() { QApplication::restoreOverrideCursor(); }
  wait_cursor(const wait_cursor&) = delete;
  wait_cursor& operator=(const wait_cursor&) = delete;
};

} // namespace

bool run_behind_box(const std::string& what, const std::function<void(work_progress&)>& work) {
  const auto shared = std::make_shared<background_work>(work);
  work_thread worker{std::thread([shared] { shared->run(); })};
  {
    const wait_cursor busy;
    shared->wait(before_the_box);
  }
  if (!shared->has_ended()) progress_box(window_in_front(), what, *shared).exec();
  if (!shared->has_ended()) { // it ignored Cancel, or the program is closing
    shared->cancel();
    return false;
  }
  worker.thread.join();
  shared->make_calls();
  shared->rethrow_failure();
  return !shared->is_cancelled();
}

} // namespace vesk
