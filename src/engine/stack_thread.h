// A thread with its own large stack that can call into the main thread and can be paused at a gate.
//
// The contract: created suspended, resumed after construction; `Terminate` is only a request; `Synchronize` runs a
// method on the main thread and waits for it; `OnTerminate` runs on the main thread when the thread has ended its work;
// with `FreeOnTerminate` the object then frees itself. The main thread serves all this in `CheckSynchronize`, which it
// calls from its event loop after the wake-up hook was called, and in `WaitFor`.
//
// A thread stopped at an arbitrary instruction may hold the allocator's lock, so it is never stopped from outside: it
// pauses at a gate that it passes often (`pass_gate`).
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <pthread.h>
#include <stdexcept>

namespace vesk {

// A failure of the platform's threads.
class EThread : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum TThreadPriority { tpIdle, tpLowest, tpLower, tpNormal, tpHigher, tpHighest, tpTimeCritical };

// The platform's value of a priority: -15, -2, -1, 0, 1, 2, 15. Here negative ones are kept by the gate, which lets
// the thread work a share of the time, positive ones are asked of the operating system.
int platform_priority(TThreadPriority priority);

using TThreadMethod = std::function<void()>;

class ResizableThread {
public:
  static constexpr std::size_t stack_size = 20'971'520; // bytes

  // The platform thread exists from here on, held at the gate. Throws EThread. Main thread or any other.
  explicit ResizableThread(bool create_suspended);

  // Of a thread that has not finished: asks it to stop, resumes it if it was created suspended, and waits for it.
  virtual ~ResizableThread();

  ResizableThread(const ResizableThread&) = delete;
  ResizableThread& operator=(const ResizableThread&) = delete;

  // Call it once the object is complete: resumes the thread unless it was created suspended.
  void AfterConstruction();

  void Suspend(); // counts
  void Resume();  // takes one count back; the last one opens the gate
  void SetSuspended(bool suspended);
  bool Suspended() const { return suspended_; }

  void Terminate() { terminated_.store(true, std::memory_order_relaxed); }
  bool Terminated() const { return terminated_.load(std::memory_order_relaxed); }
  bool Finished() const { return finished_.load(std::memory_order_acquire); }

  TThreadPriority GetPriority() const { return priority_; }
  void SetPriority(TThreadPriority priority); // throws EThread when the system refuses

  // Waits for the end and returns the exit code. On the main thread it keeps serving `Synchronize` meanwhile. Not for
  // a thread that frees itself.
  int WaitFor();

  // Runs `method` on the main thread and returns when it has; what it throws is thrown here. On the main thread it
  // simply runs. Any thread may call it, for a job's engine may have threads of its own.
  void Synchronize(const TThreadMethod& method);

  // Pauses here while the thread is suspended or has used up its share of the time. Only threads that work for this
  // one.
  void pass_gate() {
    if (gate_.load(std::memory_order_relaxed)) wait_at_gate();
  }

  int thread_number() const { return thread_number_; } // the system's; 0 before the thread runs

  // Set before the thread is resumed, then the thread's own.
  bool FreeOnTerminate = false;
  int ReturnValue = 0;
  std::function<void(ResizableThread*)> OnTerminate; // runs on the main thread

  // What left `Execute`, if anything did.
  std::exception_ptr FatalException;

  // Raises EThread with the platform's text of `error`, unless it is 0. Given a bool, false stands for the last
  // error of the platform.
  static void CheckThreadError(int error);
  static void CheckThreadError(bool success);

protected:
  virtual void DoTerminate(); // calls CallOnTerminate on the main thread, if OnTerminate is set
  virtual void Execute() = 0;

  // The gate's two halves, for callers that check the flag themselves.
  const std::atomic<bool>& gate() const { return gate_; }
  void wait_at_gate();

private:
  static void* thread_procedure(void* object);
  void CallOnTerminate();
  void run();

  pthread_t handle_{};
  bool joined_ = false;
  const bool create_suspended_;
  std::atomic<bool> suspended_{true};
  std::atomic<bool> terminated_{false};
  std::atomic<bool> finished_{false};
  std::atomic<int> thread_number_{0};
  TThreadPriority priority_ = tpNormal; // main thread only

  std::atomic<bool> gate_{true}; // the gate has to wait or to measure time
  std::mutex gate_mutex_;
  std::condition_variable gate_opened_;
  int suspend_count_ = 1;                            // guarded by gate_mutex_
  double share_ = 1.0;                               // of the time that the thread may work; guarded by gate_mutex_
  std::chrono::steady_clock::time_point work_began_; // guarded by gate_mutex_
};

// Runs what threads have posted, first in, first out. The main thread only; any other gets EThread. True when there was
// something.
bool CheckSynchronize();

// Called by `Synchronize` on the posting thread, under the lock: has to make the main thread call CheckSynchronize
// soon. Set it before threads are made.
extern std::function<void()> WakeMainThread;

// Waits until something is posted, for at most `timeout`, and runs it. The main loop of a program without a window.
bool wait_and_synchronize(std::chrono::milliseconds timeout);

// The number of threads: of their objects that live, and of those that have freed themselves and are not yet gone. A
// process that ends while there are any runs into the libraries that they leave.
int live_thread_count();

} // namespace vesk
