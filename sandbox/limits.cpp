#include "sandbox/limits.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace sandbox {

namespace {

enum class Limit { for_good, renewable };
void limit(decltype(RLIMIT_CPU) what, rlim_t most, Limit kind) {
  rlimit both{};
  getrlimit(what, &both);
  both.rlim_cur = std::min(most, both.rlim_max);
  if (kind == Limit::for_good) both.rlim_max = both.rlim_cur;
  setrlimit(what, &both);
}

// Address space in use, which a sanitizer makes large; 0 where the system does not tell.
rlim_t memory_in_use() {
  unsigned long long pages = 0;
  if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%llu", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

void limit_memory(std::uint64_t bytes) {
  limit(RLIMIT_CORE, 0, Limit::for_good);
  if (const rlim_t used = memory_in_use()) limit(RLIMIT_AS, used + bytes, Limit::for_good);
}

void limit_seconds(unsigned seconds) {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  limit(RLIMIT_CPU, static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) + 1 + seconds, Limit::renewable);
}

} // namespace sandbox
