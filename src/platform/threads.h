// Thread numbers and priorities of the operating system.
#pragma once

namespace vesk {

// The system's number of the calling thread; no two threads that live at the same time share one.
int current_thread_number();

// Sets a thread's nice value, -20 (most urgent) to 19. Returns false where the system refuses; lowering one's own
// urgency always works, raising it takes a privilege.
bool set_thread_nice(int thread_number, int nice);

} // namespace vesk
