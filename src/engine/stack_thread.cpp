#include "engine/stack_thread.h"

#include "platform/threads.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <string>
#include <thread>
#include <vector>

namespace vesk {

std::function<void()> WakeMainThread;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// One pending call into the main thread; lives on the stack of the thread that waits for it.
struct synchronize_record {
  const TThreadMethod& method;
  std::exception_ptr failure;
  bool done = false; // guarded by the shared lock
};

// Shared by all threads. The lock is held while a posted method runs on the main thread; it is recursive because the
// method may create threads.
struct shared_state {
  std::recursive_mutex thread_lock;
  std::condition_variable_any posted;
  std::condition_variable_any served;
  std::deque<synchronize_record*> sync_list; // guarded by thread_lock
  int thread_count = 0;                      // guarded by thread_lock
  std::vector<pthread_t> leaving;            // have freed themselves but not ended yet; guarded by thread_lock
  const std::thread::id main_thread = std::this_thread::get_id();
};

shared_state& shared() {
  static shared_state state;
  return state;
}

// Created on the main thread, before main begins.
[[maybe_unused]] const shared_state& made_early = shared();

// A thread that has freed itself is counted until it is gone: libraries run code at the end of a thread, and the
// process must not exit before that. The lock is held.
void count_out_the_gone(shared_state& state) {
  const auto gone = [](pthread_t handle) { return pthread_tryjoin_np(handle, nullptr) != EBUSY; };
  state.thread_count -= static_cast<int>(std::erase_if(state.leaving, gone));
}

bool on_main_thread() {
  return std::this_thread::get_id() == shared().main_thread;
}

constexpr int platform_priorities[] = {-15, -2, -1, 0, 1, 2, 15};

double share_of(TThreadPriority priority) {
  switch (priority) {
  case tpIdle: return 1.0 / 16;
  case tpLowest: return 0.25;
  case tpLower: return 0.5;
  default: return 1.0;
  }
}

int nice_of(TThreadPriority priority) {
  switch (priority) {
  case tpHigher: return -5;
  case tpHighest: return -10;
  case tpTimeCritical: return -20;
  default: return 0;
  }
}

} // namespace

int platform_priority(TThreadPriority priority) {
  return platform_priorities[priority];
}

ResizableThread::ResizableThread(bool create_suspended) : create_suspended_(create_suspended) {
  pthread_attr_t attributes;
  CheckThreadError(pthread_attr_init(&attributes));
  int error = pthread_attr_setstacksize(&attributes, stack_size);
  if (error == 0) error = pthread_create(&handle_, &attributes, &ResizableThread::thread_procedure, this);
  pthread_attr_destroy(&attributes);
  if (error != 0) throw EThread(std::string("Cannot create a thread: ") + std::strerror(error) + ".");
  const std::lock_guard lock(shared().thread_lock);
  count_out_the_gone(shared());
  ++shared().thread_count;
}

ResizableThread::~ResizableThread() {
  if (pthread_equal(pthread_self(), handle_)) { // frees itself
    const std::lock_guard lock(shared().thread_lock);
    shared().leaving.push_back(handle_);
    return;
  }
  try {
    if (!Finished()) {
      Terminate();
      if (create_suspended_ || suspended_) Resume();
    }
    if (!joined_) WaitFor();
  } catch (...) {
    std::terminate(); // this object may still be in use by a thread that cannot be waited for
  }
  const std::lock_guard lock(shared().thread_lock);
  --shared().thread_count;
}

void ResizableThread::AfterConstruction() {
  if (!create_suspended_) Resume();
}

void* ResizableThread::thread_procedure(void* object) {
  static_cast<ResizableThread*>(object)->run();
  return nullptr;
}

void ResizableThread::run() {
  thread_number_ = current_thread_number();
  wait_at_gate(); // always through its lock, so that everything done before the resume is visible here
  try {
    if (!Terminated()) Execute();
  } catch (...) {
    FatalException = std::current_exception();
  }
  const bool free_itself = FreeOnTerminate;
  finished_.store(true, std::memory_order_release);
  try {
    DoTerminate();
  } catch (...) {
    if (!FatalException) FatalException = std::current_exception();
  }
  if (free_itself) delete this;
}

void ResizableThread::DoTerminate() {
  if (OnTerminate) Synchronize([this] { CallOnTerminate(); });
}

void ResizableThread::CallOnTerminate() {
  if (OnTerminate) OnTerminate(this);
}

void ResizableThread::Suspend() {
  const std::lock_guard lock(gate_mutex_);
  suspended_ = true;
  ++suspend_count_;
  gate_ = true;
}

void ResizableThread::Resume() {
  const std::lock_guard lock(gate_mutex_);
  const int previous = suspend_count_;
  if (previous > 0) --suspend_count_;
  if (previous != 1) return;
  suspended_ = false;
  gate_ = share_ < 1.0;
  work_began_ = steady_clock::now();
  gate_opened_.notify_all();
}

void ResizableThread::SetSuspended(bool suspended) {
  if (suspended == suspended_) return;
  if (suspended)
    Suspend();
  else
    Resume();
}

void ResizableThread::SetPriority(TThreadPriority priority) {
  const int number = thread_number_;
  if (number != 0 && nice_of(priority) != nice_of(priority_))
    CheckThreadError(set_thread_nice(number, nice_of(priority)));
  priority_ = priority;
  const std::lock_guard lock(gate_mutex_);
  share_ = share_of(priority);
  gate_ = suspend_count_ > 0 || share_ < 1.0;
  work_began_ = steady_clock::now();
  gate_opened_.notify_all();
}

void ResizableThread::wait_at_gate() {
  constexpr auto longest_debt = milliseconds(1000);
  constexpr auto slice = milliseconds(10); // worked in one go before a rest; short enough for smooth progress
  std::unique_lock lock(gate_mutex_);
  gate_opened_.wait(lock, [this] { return suspend_count_ == 0; });
  if (share_ >= 1.0) return;
  const auto worked = std::chrono::duration_cast<milliseconds>(steady_clock::now() - work_began_);
  if (worked < slice) return;
  // An engine may work for long between two passes. Its share is still kept, up to a rest too short to be noticed.
  const auto rest = std::chrono::duration_cast<milliseconds>(std::min(worked, longest_debt) * (1.0 / share_ - 1.0));
  const double share = share_;
  gate_opened_.wait_for(lock, rest, [this, share] { return share_ != share; });
  gate_opened_.wait(lock, [this] { return suspend_count_ == 0; });
  work_began_ = steady_clock::now();
}

int ResizableThread::WaitFor() {
  if (joined_) return ReturnValue;
  if (on_main_thread()) {
    for (;;) {
      CheckSynchronize();
      const int error = pthread_tryjoin_np(handle_, nullptr);
      if (error == 0) break;
      if (error != EBUSY) CheckThreadError(error);
      wait_and_synchronize(milliseconds(1));
    }
  } else {
    CheckThreadError(pthread_join(handle_, nullptr));
  }
  joined_ = true;
  return ReturnValue;
}

void ResizableThread::Synchronize(const TThreadMethod& method) {
  if (on_main_thread()) return method();
  shared_state& state = shared();
  synchronize_record record{method, nullptr};
  {
    std::unique_lock lock(state.thread_lock);
    state.sync_list.push_back(&record);
    if (WakeMainThread) WakeMainThread();
    state.posted.notify_all();
    state.served.wait(lock, [&record] { return record.done; });
  }
  if (gate_) { // waiting does not count as work
    const std::lock_guard lock(gate_mutex_);
    work_began_ = steady_clock::now();
  }
  if (record.failure) std::rethrow_exception(record.failure);
}

bool CheckSynchronize() {
  if (!on_main_thread())
    throw EThread("CheckSynchronize was called by thread " + std::to_string(current_thread_number()) +
                  ", which is not the main thread.");
  shared_state& state = shared();
  const std::unique_lock lock(state.thread_lock);
  const bool any = !state.sync_list.empty();
  while (!state.sync_list.empty()) {
    synchronize_record& record = *state.sync_list.front();
    state.sync_list.pop_front();
    try {
      record.method();
    } catch (...) {
      record.failure = std::current_exception();
    }
    record.done = true;
    state.served.notify_all();
  }
  return any;
}

bool wait_and_synchronize(milliseconds timeout) {
  shared_state& state = shared();
  {
    std::unique_lock lock(state.thread_lock);
    state.posted.wait_for(lock, timeout, [&state] { return !state.sync_list.empty(); });
  }
  return CheckSynchronize();
}

int live_thread_count() {
  const std::lock_guard lock(shared().thread_lock);
  count_out_the_gone(shared());
  return shared().thread_count;
}

void ResizableThread::CheckThreadError(int error) {
  if (error != 0)
    throw EThread(std::string("Thread error: ") + std::strerror(error) + " (" + std::to_string(error) + ").");
}

void ResizableThread::CheckThreadError(bool success) {
  if (!success) CheckThreadError(errno);
}

} // namespace vesk
