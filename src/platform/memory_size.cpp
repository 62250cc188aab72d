#include "platform/memory_size.h"

#include <unistd.h>

namespace vesk {

std::uint64_t physical_memory() {
  const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGESIZE);
  return pages > 0 && page > 0 ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page) : 0;
}

} // namespace vesk
