#include "query/sources/databases/sqlite_private_log.h"

#include <cstddef>
#include <memory>
#include <new>
#include <sqlite3.h>
#include <vector>

namespace vesk {

namespace {

// Stored after each file structure of the system's VFS: its methods, with those for the index replaced.
struct log_index {
  const sqlite3_io_methods* system = nullptr;
  sqlite3_io_methods methods = {};
  std::vector<std::unique_ptr<char[]>> regions = {};
};

sqlite3_vfs* system_vfs() {
  static sqlite3_vfs* const vfs = sqlite3_vfs_find(nullptr);
  return vfs;
}

std::size_t size_of_file() {
  constexpr std::size_t alignment = alignof(std::max_align_t);
  return (static_cast<std::size_t>(system_vfs()->szOsFile) + alignment - 1) / alignment * alignment;
}

log_index& index_of(sqlite3_file* file) {
  return *std::launder(reinterpret_cast<log_index*>(reinterpret_cast<char*>(file) + size_of_file()));
}

int close_file(sqlite3_file* file) {
  log_index& index = index_of(file);
  const int state = index.system->xClose(file);
  index.~log_index();
  return state;
}

int map_region(sqlite3_file* file, int number, int size, int extend, void volatile** region) try {
  auto& regions = index_of(file).regions;
  const auto wanted = static_cast<std::size_t>(number);
  *region = nullptr;
  if (wanted >= regions.size() && !extend) return SQLITE_OK;
  while (wanted >= regions.size()) regions.push_back(std::make_unique<char[]>(static_cast<std::size_t>(size)));
  *region = regions[wanted].get();
  return SQLITE_OK;
} catch (const std::bad_alloc&) {
  return SQLITE_NOMEM;
}

// No other program can have it open, so there is nothing to lock.
int lock_region(sqlite3_file*, int, int, int) {
  return SQLITE_OK;
}
void pass_barrier(sqlite3_file*) {}
int unmap_regions(sqlite3_file* file, int) {
  index_of(file).regions.clear();
  return SQLITE_OK;
}

int open_file(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* flags_out) {
  if (flags & SQLITE_OPEN_WAL) flags = SQLITE_OPEN_WAL | SQLITE_OPEN_READONLY;
  const int state = system_vfs()->xOpen(system_vfs(), name, file, flags, flags_out);
  if (state != SQLITE_OK || !file->pMethods) return state;
  log_index& index = *new (reinterpret_cast<char*>(file) + size_of_file()) log_index{file->pMethods, *file->pMethods};
  index.methods.xClose = close_file;
  index.methods.xShmMap = map_region;
  index.methods.xShmLock = lock_region;
  index.methods.xShmBarrier = pass_barrier;
  index.methods.xShmUnmap = unmap_regions;
  file->pMethods = &index.methods;
  return SQLITE_OK;
}

} // namespace

const char* sqlite_private_log() {
  static constexpr const char* name = "vesk-private-log";
  static sqlite3_vfs vfs = [] {
    sqlite3_vfs made = *system_vfs(); // its other functions ignore the VFS argument
    made.szOsFile = static_cast<int>(size_of_file() + sizeof(log_index));
    made.pNext = nullptr;
    made.zName = name;
    made.xOpen = open_file;
    return made;
  }();
  static const int registered = sqlite3_vfs_register(&vfs, 0);
  return registered == SQLITE_OK ? name : nullptr;
}

} // namespace vesk
