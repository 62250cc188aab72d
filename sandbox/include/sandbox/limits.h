// What a helper process may take of the machine. Beyond a limit the system ends it, or memory is refused.
#ifndef SANDBOX_LIMITS_H
#define SANDBOX_LIMITS_H

#include <cstdint>

namespace sandbox {

// Bytes of address space, beside what the process has now. For good; also leaves no core files.
void limit_memory(std::uint64_t bytes);

// Processor time from now on. Call it again before each piece of work.
void limit_seconds(unsigned seconds);

} // namespace sandbox

#endif
