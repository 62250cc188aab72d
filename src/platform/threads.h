// Thread numbers and priorities of the operating system.
#pragma once

namespace vesk {

// The system's number of the calling thread; unique among the threads that exist at the same time.
int current_thread_number();

// Sets a thread's nice value, -20 (most urgent) to 19. Returns false if the system refuses; lowering one's own priority
// always works, raising it requires a privilege.
bool set_thread_nice(int thread_number, int nice);

} // namespace vesk
