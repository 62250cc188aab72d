#include "app/worker_priority.h"

#include "platform/processes.h"
#include "platform/threads.h"

namespace vesk {

namespace {

constexpr int high_nice = -15; // above the highest worker of the normal class

TThreadPriority priority_of(int value) {
  for (const TThreadPriority priority : {tpLowest, tpLower, tpNormal, tpHigher, tpHighest})
    if (platform_priority(priority) == value) return priority;
  return tpNormal;
}

} // namespace

worker_priority::~worker_priority() {
  if (class_ == process_class::high) set_process_class(process_class::normal);
}

bool worker_priority::suspend() {
  worker_.Suspend();
  return true;
}

bool worker_priority::resume() {
  worker_.Resume();
  return true;
}

bool worker_priority::set_process_class(process_class wanted) {
  const bool high = wanted == process_class::high;
  static const int normal_nice = process_nice(); // the priority with which the user started the program
  if (!set_process_nice(high ? high_nice : normal_nice, high ? normal_nice : high_nice)) return false;
  class_ = wanted;
  return true;
}

// In the high class a worker outranks any of the normal class at any own priority, so the gate lets it pass.
bool worker_priority::set_thread_priority(int value) {
  const bool high = class_ == process_class::high;
  try {
    worker_.SetPriority(high ? tpNormal : priority_of(value));
  } catch (const EThread&) {
    return false;
  }
  return !high || worker_.thread_number() == 0 || set_thread_nice(worker_.thread_number(), high_nice);
}

} // namespace vesk
