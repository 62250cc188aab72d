// A thread with its own large stack that can call into the main thread and can be paused at a gate.
//
// The contract: created suspended, resumed after construction; `Terminate` only requests the end; `Synchronize` runs a
// method on the main thread and waits for it; `OnTerminate` runs on the main thread after the thread's work has ended;
// with `FreeOnTerminate` the object then frees itself. The main thread serves these requests in `CheckSynchronize`,
// which it calls from its event loop after each call of the wake-up hook, and in `WaitFor`.
//
// A thread stopped at an arbitrary instruction may hold the allocator's lock, so it is never stopped from outside: it
// pauses only at a gate, which it passes often (`pass_gate`).
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

// A failure of a thread function of the platform.
class EThread : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum TThreadPriority { tpIdle, tpLowest, tpLower, tpNormal, tpHigher, tpHighest, tpTimeCritical };

// The platform's value of a priority: -15, -2, -1, 0, 1, 2, 15. Negative ones are implemented by the gate, which gives
// the thread a share of the time; positive ones are requested from the operating system.
int platform_priority(TThreadPriority priority);

using TThreadMethod = std::function<void()>;

class ResizableThread {
public:
  static constexpr std::size_t stack_size = 20'971'520; // bytes

  // Creates the platform thread, held at the gate. Throws EThread. Main thread or any other.
  explicit ResizableThread(bool create_suspended);

  // If the thread has not finished: asks it to stop, resumes it if it was created suspended, and waits for it.
  virtual ~ResizableThread();

  ResizableThread(const ResizableThread&) = delete;
  ResizableThread& operator=(const ResizableThread&) = delete;

  // Call it once the object is complete: resumes the thread unless it was created suspended.
  void AfterConstruction();

  void Suspend(); // adds one to the suspend count
  void Resume();  // subtracts one; 0 opens the gate
  void SetSuspended(bool suspended);
  bool Suspended() const { return suspended_; }

  void Terminate() { terminated_.store(true, std::memory_order_relaxed); }
  bool Terminated() const { return terminated_.load(std::memory_order_relaxed); }
  bool Finished() const { return finished_.load(std::memory_order_acquire); }

  TThreadPriority GetPriority() const { return priority_; }
  void SetPriority(TThreadPriority priority); // throws EThread when the system refuses

  // Waits for the end and returns the exit code. The main thread serves `Synchronize` while it waits. Not for a thread
  // that frees itself.
  int WaitFor();

  // Runs `method` on the main thread and returns when it is done; its exceptions are rethrown here. On the main thread
  // it is simply called. Any thread may call this, since an engine may have its own threads.
  void Synchronize(const TThreadMethod& method);

  // Pauses here while the thread is suspended or has used up its share of the time. Only for threads that work for this
  // one.
  void pass_gate() {
    if (gate_.load(std::memory_order_relaxed)) wait_at_gate();
  }

  int thread_number() const { return thread_number_; } // the system's number; 0 before the thread runs

  // Set before the thread is resumed; afterwards only the thread itself uses it.
  bool FreeOnTerminate = false;
  int ReturnValue = 0;
  std::function<void(ResizableThread*)> OnTerminate; // runs on the main thread

  // The exception that ended `Execute`, if any.
  std::exception_ptr FatalException;

  // Throws EThread with the platform's text for `error`, unless it is 0. The bool overload: false means the last error
  // of the platform.
  static void CheckThreadError(int error);
  static void CheckThreadError(bool success);

protected:
  virtual void DoTerminate(); // calls CallOnTerminate on the main thread, if OnTerminate is set
  virtual void Execute() = 0;

  // The two halves of the gate, for callers that check the flag themselves.
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
  int suspend_count_ = 1; // guarded by gate_mutex_
  double share_ = 1.0;    // of the time, in which the thread may work; guarded by gate_mutex_
  std::chrono::steady_clock::time_point work_began_; // guarded by gate_mutex_
};

// Runs the methods posted by threads, in the order of posting. Main thread only; other threads get EThread. True if
// there was one.
bool CheckSynchronize();

// Called by `Synchronize` on the posting thread, under the lock: must make the main thread call CheckSynchronize soon.
// Set it before any thread is created.
extern std::function<void()> WakeMainThread;

// Waits for a posted method, for at most `timeout`, and runs it. The main loop of a program without a window.
bool wait_and_synchronize(std::chrono::milliseconds timeout);

// The number of threads: those whose objects exist, and those that have freed themselves but not ended yet. If there
// are any, the process must not exit: they still run code of libraries.
int live_thread_count();

} // namespace vesk
